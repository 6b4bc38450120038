# Compile settings of all targets.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

option(RENEWER_ASAN "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
option(RENEWER_TSAN "Build with ThreadSanitizer" OFF)

add_compile_options(-Wall -Wextra -Wconversion -Wshadow -Werror)
# The same program from whatever folder it is built in.
add_compile_options($<$<CONFIG:MinSizeRel>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
                    $<$<CONFIG:MinSizeRel>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)
# Packages reach 4 GiB and file times go beyond 2038, even where a long has 32 bits; without these
# settings, calls that return such values fail there (EOVERFLOW).
add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
if(RENEWER_ASAN)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(RENEWER_TSAN)
  add_compile_options(-fsanitize=thread)
  add_link_options(-fsanitize=thread)
endif()

# One static library per folder of src/, named renewer_<folder> with the alias renewer::<folder>.
# LINKS names the libraries that its files include from; the test house/arrows checks it. HEADERS
# names headers to install for applications; libraries with HEADERS or INSTALLED are installed as
# well.
#
# Shipping code is built without exceptions and RTTI, so it needs no C++ runtime library.
function(renewer_library folder)
  cmake_parse_arguments(ARG "INSTALLED" "" "SOURCES;LINKS;HEADERS" ${ARGN})
  add_library(renewer_${folder} STATIC ${ARG_SOURCES})
  add_library(renewer::${folder} ALIAS renewer_${folder})
  renewer_shipping_options(renewer_${folder})
  target_include_directories(renewer_${folder} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>)
  target_link_libraries(renewer_${folder} PUBLIC ${ARG_LINKS})
  if(ARG_HEADERS)
    target_sources(renewer_${folder} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src
                                            FILES ${ARG_HEADERS})
  endif()
  if(RENEWER_LIBRARIES AND (ARG_INSTALLED OR ARG_HEADERS))
    set_target_properties(renewer_${folder} PROPERTIES EXPORT_NAME ${folder})
    install(TARGETS renewer_${folder} EXPORT renewer COMPONENT dev
            ARCHIVE COMPONENT dev
            FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/renewer COMPONENT dev)
  endif()
endfunction()

# A library of the simulator, included as "simulator/<folder>/<file>".
function(renewer_simulator_library name kind)
  add_library(renewer_${name} ${kind} ${ARGN})
  add_library(renewer::${name} ALIAS renewer_${name})
  set(scope PUBLIC)
  if(kind STREQUAL INTERFACE)
    set(scope INTERFACE)
  endif()
  target_include_directories(renewer_${name} ${scope} ${PROJECT_SOURCE_DIR})
endfunction()

function(renewer_shipping_options target)
  target_compile_options(${target} PRIVATE -fno-exceptions -fno-rtti
                         -ffunction-sections -fdata-sections)
  # Threads of small C libraries have 128 KiB of stack; sanitizers make frames larger.
  if(NOT RENEWER_ASAN AND NOT RENEWER_TSAN)
    target_compile_options(${target} PRIVATE -Wframe-larger-than=32768)
  endif()
endfunction()

# A shipping program contains no unused code and links no unneeded library.
function(renewer_shipping_program target)
  renewer_shipping_options(${target})
  target_link_options(${target} PRIVATE -static-libgcc -static-libstdc++ -Wl,--gc-sections,--as-needed)
endfunction()
