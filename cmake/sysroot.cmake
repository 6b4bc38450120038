# Toolchain for your own root file system: CMAKE_SYSROOT names the directory with its headers and
# libraries, CMAKE_CXX_COMPILER a compiler for it.
if(NOT CMAKE_SYSROOT)
  message(FATAL_ERROR "Where is the unit's root? cmake --preset sysroot -DCMAKE_SYSROOT=DIRECTORY")
endif()
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
if(NOT CMAKE_CXX_COMPILER)
  set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
endif()
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++")

# Headers, libraries and pkg-config files are taken from there only.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
file(GLOB directories ${CMAKE_SYSROOT}/usr/lib/pkgconfig ${CMAKE_SYSROOT}/usr/lib/*/pkgconfig
     ${CMAKE_SYSROOT}/usr/share/pkgconfig)
list(JOIN directories ":" directories)
set(ENV{PKG_CONFIG_LIBDIR} "${directories}")
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})

# Debian's cross compilers search their own C library first, whatever the root is. So their
# directories are named explicitly, without that library's: <triplet>/include, and the one with
# crt1.o.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} --sysroot=${CMAKE_SYSROOT} -print-file-name=crt1.o
                OUTPUT_VARIABLE crt1)
string(FIND "${crt1}" "${CMAKE_SYSROOT}" inside)
file(GLOB crt1 ${CMAKE_SYSROOT}/usr/lib/*/crt1.o ${CMAKE_SYSROOT}/usr/lib/crt1.o)
if(NOT inside EQUAL 0 AND crt1)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} --sysroot=${CMAKE_SYSROOT} -E -x c++ -v /dev/null
                  OUTPUT_QUIET ERROR_VARIABLE searched)
  string(REGEX MATCHALL "\n (/[^\n]+)" searched "${searched}")
  list(FILTER searched EXCLUDE REGEX "/[^ ]* |[.][.]/[^/.]+/include$")
  list(TRANSFORM searched REPLACE "\n " "-isystem ")
  list(JOIN searched " " searched)
  set(CMAKE_CXX_FLAGS_INIT "-nostdinc ${searched}")
  list(GET crt1 0 crt1)
  cmake_path(GET crt1 PARENT_PATH libraries)
  string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -B${libraries} -L${libraries}")
endif()
