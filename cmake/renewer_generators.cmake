# Files that the scripts of tools/generators make during the build from short descriptions and
# installed fonts. The scripts run on the build machine, so they need no compiler. A release
# includes the files in the folder generated, so it needs neither Python nor fonts.
set(RENEWER_GENERATED ${PROJECT_SOURCE_DIR}/generated)

function(renewer_has_pillow result python)
  execute_process(COMMAND ${python} -c "import PIL.ImageFont" RESULT_VARIABLE status
                  OUTPUT_QUIET ERROR_QUIET)
  if(NOT status EQUAL 0)
    set(${result} FALSE PARENT_SCOPE)
  endif()
endfunction()

# The first python3 in PATH may not be the system's, for which Pillow is packaged.
find_program(RENEWER_PYTHON python3 HINTS /usr/bin VALIDATOR renewer_has_pillow
             DOC "Python that has Pillow")
find_path(RENEWER_FONTS DejaVuSans-Bold.ttf PATHS /usr/share/fonts/truetype/dejavu
          NO_CMAKE_FIND_ROOT_PATH DOC "Directory of the DejaVu fonts")
find_file(RENEWER_HEX_FONT unifont.hex PATHS /usr/share/unifont
          NO_CMAKE_FIND_ROOT_PATH DOC "Bitmap font of 8 x 16 and 16 x 16 cells")

function(renewer_need_generators)
  if(NOT RENEWER_PYTHON)
    message(FATAL_ERROR "No python3 here can import PIL (Debian: python3-pil)")
  endif()
  if(NOT RENEWER_FONTS)
    message(FATAL_ERROR "DejaVuSans-Bold.ttf is missing (Debian: fonts-dejavu-core)")
  endif()
  if(NOT RENEWER_HEX_FONT)
    message(FATAL_ERROR "unifont.hex is missing (Debian: unifont)")
  endif()
endfunction()

# Makes <output> from <description> with a script of tools/generators. Further arguments are passed
# to the script; DEPENDS names the other files that it reads.
function(renewer_generate output script description)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  cmake_path(GET output FILENAME name)
  if(EXISTS ${RENEWER_GENERATED}/${name})
    configure_file(${RENEWER_GENERATED}/${name} ${output} COPYONLY)
    return()
  endif()
  renewer_need_generators()
  set(scripts ${PROJECT_SOURCE_DIR}/tools/generators)
  cmake_path(ABSOLUTE_PATH description)
  add_custom_command(OUTPUT ${output}
                     COMMAND ${RENEWER_PYTHON} -B ${scripts}/${script} ${description}
                             ${ARG_UNPARSED_ARGUMENTS}
                     COMMAND ${CMAKE_COMMAND} -E touch ${output}
                     DEPENDS ${scripts}/${script} ${scripts}/cpp_source.py ${description}
                             ${ARG_DEPENDS}
                     COMMENT "Following ${description}" VERBATIM)
endfunction()
