# cmake --install: headers below include/vkcl with the paths they have in src/, the library, its
# CMake package and its pkg-config module, and the tool with its manual pages and completions.
# Components: library (what programs need to run), development (what they need to be built), tool.
include(CMakePackageConfigHelpers)

install(TARGETS VKCLProfileHandler EXPORT VKCLProfileHandlerTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
                NAMELINK_COMPONENT development
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
# The static library leaves the libraries below it to whoever links it.
if(NOT BUILD_SHARED_LIBS)
  foreach(library vkcl_lcms2 vkcl_pugixml)
    if(TARGET ${library})
      get_target_property(${library}_type ${library} TYPE)
      install(TARGETS ${library} EXPORT VKCLProfileHandlerTargets
              ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
    endif()
  endforeach()
endif()

set(vkcl_internal_headers
    colornames/Colorants.h colornames/LazyDefinitions.h handler/TagReading.h
    inspect/DocumentForms.h inspect/DocumentNode.h inspect/RecordNode.h
    inspect/Examination.h inspect/JsonWriter.h inspect/RecordDiff.h
    inspect/RecordValue.h
    platform/Bytes.h platform/Guarded.h platform/OwnedText.h
    platform/axml/XmlText.h platform/plinth/Base64.h platform/plinth/FileRewrite.h platform/plinth/HexText.h
    platform/plinth/NumberText.h platform/plinth/SiblingFile.h
    platform/plinth/Utf8.h platform/plinth/WholeFile.h privatetags/PayloadCursor.h
    platform/plinth/LargeBlock.h platform/profiler/ContextMemory.h platform/profiler/DictionaryCheck.h
    platform/profiler/MetaElement.h
    platform/profiler/ProfilerObjects.h profile/TableInFile.h vsd/VSDElements.h)
file(GLOB_RECURSE vkcl_headers RELATIVE "${PROJECT_SOURCE_DIR}/src" CONFIGURE_DEPENDS
     "${PROJECT_SOURCE_DIR}/src/*.h")
list(REMOVE_ITEM vkcl_headers ${vkcl_internal_headers})
list(FILTER vkcl_headers EXCLUDE REGEX "^inspect/report/")
foreach(header IN LISTS vkcl_headers)
  get_filename_component(folder "${header}" DIRECTORY)
  install(FILES "${PROJECT_SOURCE_DIR}/src/${header}"
          DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/vkcl/${folder}" COMPONENT development)
endforeach()

set(vkcl_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/VKCLProfileHandler")
install(EXPORT VKCLProfileHandlerTargets NAMESPACE VKCLProfileHandler::
        DESTINATION "${vkcl_cmake_dir}" COMPONENT development)
configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/VKCLProfileHandlerConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/VKCLProfileHandlerConfig.cmake"
  INSTALL_DESTINATION "${vkcl_cmake_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/VKCLProfileHandlerConfigVersion.cmake"
                                 COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/VKCLProfileHandlerConfig.cmake"
              "${PROJECT_BINARY_DIR}/VKCLProfileHandlerConfigVersion.cmake"
        DESTINATION "${vkcl_cmake_dir}" COMPONENT development)

if(BUILD_SHARED_LIBS)
  set(vkcl_pc_cflags "-DVKCL_SHARED")
  set(vkcl_pc_requires "")
else()
  set(vkcl_pc_cflags "")
  set(vkcl_pc_requires "lcms2 pugixml")
endif()
file(RELATIVE_PATH vkcl_pc_to_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file("${PROJECT_SOURCE_DIR}/cmake/vkclprofilehandler.pc.in"
               "${PROJECT_BINARY_DIR}/vkclprofilehandler.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/vkclprofilehandler.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

if(VKCL_BUILD_TOOL)
  install(TARGETS vkcl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
  if(TARGET vkcl_documents)
    set(vkcl_tool_share "${PROJECT_BINARY_DIR}/tools/share")
    install(DIRECTORY "${vkcl_tool_share}/man/man1" DESTINATION ${CMAKE_INSTALL_MANDIR}
            COMPONENT tool)
    install(DIRECTORY "${vkcl_tool_share}/bash-completion" "${vkcl_tool_share}/fish"
            DESTINATION ${CMAKE_INSTALL_DATADIR} COMPONENT tool)
    # Distributions have a folder of their own beside the one that is zsh's default.
    set(VKCL_ZSH_DIR "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" CACHE STRING
        "Where zsh's completion is installed")
    install(FILES "${vkcl_tool_share}/zsh/site-functions/_vkcl" DESTINATION "${VKCL_ZSH_DIR}"
            COMPONENT tool)
  endif()
endif()
