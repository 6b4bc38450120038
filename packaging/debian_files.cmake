# Runs before the packages are put together: what Debian expects beside the files, the terms, a
# dated list of changes, compressed manual pages and the reasons of what looks odd.
set(readable FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} upper)
  set(name ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
  configure_file(${CPACK_RENEWER_SOURCE}/LICENSE ${share}/doc/${name}/copyright ${readable} COPYONLY)
  configure_file(${CPACK_RENEWER_CHANGELOG} ${share}/doc/${name}/changelog ${readable} COPYONLY)
  if(EXISTS ${CPACK_RENEWER_SOURCE}/packaging/lintian/${name})
    configure_file(${CPACK_RENEWER_SOURCE}/packaging/lintian/${name}
                   ${share}/lintian/overrides/${name} ${readable} COPYONLY)
  endif()
  file(GLOB_RECURSE pages ${share}/man/*.[1-9])
  execute_process(COMMAND gzip -9n ${pages} ${share}/doc/${name}/changelog
                  COMMAND_ERROR_IS_FATAL ANY)
endforeach()
