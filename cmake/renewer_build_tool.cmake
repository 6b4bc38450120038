# A program that is run during the build, on the build machine: an ordinary target there; when
# cross compiling it is compiled by the build machine's own compiler. Usable as COMMAND of a custom
# command either way; DEPENDS on it works as for any target.
#
#   renewer_build_tool(<target> SOURCES <file>... [PACKAGES <pkg-config name>...])
function(renewer_build_tool target)
  cmake_parse_arguments(ARG "" "" "SOURCES;PACKAGES" ${ARGN})

  if(NOT CMAKE_CROSSCOMPILING)
    add_executable(${target} ${ARG_SOURCES})
    foreach(package ${ARG_PACKAGES})
      pkg_check_modules(${package} REQUIRED IMPORTED_TARGET ${package})
      target_link_libraries(${target} PRIVATE PkgConfig::${package})
    endforeach()
    return()
  endif()

  find_program(RENEWER_BUILD_CXX NAMES c++ g++ clang++ REQUIRED
               DOC "C++ compiler of the build machine")
  set(flags "")
  if(ARG_PACKAGES)
    # What the build machine has, whatever the toolchain file says about the target.
    execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=PKG_CONFIG_LIBDIR
                            ${PKG_CONFIG_EXECUTABLE} --cflags --libs ${ARG_PACKAGES}
                    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
                    COMMAND_ERROR_IS_FATAL ANY)
  endif()
  separate_arguments(flags UNIX_COMMAND "${flags}")
  list(TRANSFORM ARG_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  # Not the target's own name: CMake would take the file for the target.
  set(file ${CMAKE_CURRENT_BINARY_DIR}/${target}.host)
  add_custom_command(OUTPUT ${file}
                     COMMAND ${RENEWER_BUILD_CXX} -std=c++20 -O1 ${ARG_SOURCES} -o ${file} ${flags}
                     DEPENDS ${ARG_SOURCES} ${headers}
                     COMMENT "Building ${target} for the build machine" VERBATIM)
  add_custom_target(${target}_build DEPENDS ${file})
  add_executable(${target} IMPORTED GLOBAL)
  set_target_properties(${target} PROPERTIES IMPORTED_LOCATION ${file})
  add_dependencies(${target} ${target}_build)
endfunction()
