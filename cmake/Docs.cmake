# Target docs: the API pages in build/docs, from the headers that Install.cmake installs.
find_program(VKCL_DOXYGEN doxygen)
if(VKCL_DOXYGEN)
  list(TRANSFORM vkcl_headers REPLACE "(.+)" "\"${PROJECT_SOURCE_DIR}/src/\\1\""
       OUTPUT_VARIABLE vkcl_doxygen_input)
  list(PREPEND vkcl_doxygen_input "\"${PROJECT_SOURCE_DIR}/docs/api.dox\"")
  list(JOIN vkcl_doxygen_input " " vkcl_doxygen_input)
  set(vkcl_docs_folder "${PROJECT_SOURCE_DIR}/build/docs")
  configure_file("${PROJECT_SOURCE_DIR}/docs/Doxyfile.in" "${PROJECT_BINARY_DIR}/Doxyfile" @ONLY)
  add_custom_target(docs COMMAND "${CMAKE_COMMAND}" -E make_directory "${vkcl_docs_folder}"
                         COMMAND "${VKCL_DOXYGEN}" "${PROJECT_BINARY_DIR}/Doxyfile" VERBATIM)
endif()
