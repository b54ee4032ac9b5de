# Run by CPack when a package's files are gathered: puts in what Debian's policy asks of each
# package (12.3, 12.5, 12.7), and packs the documents that it wants packed.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()
find_program(GZIP gzip REQUIRED)

function(vkcl_pack file)
  execute_process(COMMAND "${GZIP}" -9nf "${file}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" name)
  set(package "${CPACK_DEBIAN_${name}_PACKAGE_NAME}")
  set(share "${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share")
  set(documents "${share}/doc/${package}")
  file(MAKE_DIRECTORY "${documents}")

  configure_file("${CPACK_RESOURCE_FILE_LICENSE}" "${documents}/copyright" COPYONLY)
  get_filename_component(source "${CPACK_RESOURCE_FILE_LICENSE}" DIRECTORY)
  configure_file("${source}/CHANGELOG.md" "${documents}/changelog" COPYONLY)
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(WRITE "${documents}/changelog.Debian"
       "${CPACK_DEBIAN_PACKAGE_SOURCE} "
       "(${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
       "  * Packaged by the project itself; changelog.gz tells what is new.\n\n"
       " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
  file(GLOB pages "${share}/man/man*/*.[1-9]" "${share}/man/*/man*/*.[1-9]")
  foreach(file IN LISTS pages ITEMS "${documents}/changelog" "${documents}/changelog.Debian")
    vkcl_pack("${file}")
  endforeach()

  set(overrides "${CMAKE_CURRENT_LIST_DIR}/${component}.lintian-overrides")
  if(EXISTS "${overrides}")
    configure_file("${overrides}" "${share}/lintian/overrides/${package}" COPYONLY)
  endif()
endforeach()
