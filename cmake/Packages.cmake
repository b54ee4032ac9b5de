# cpack -G DEB: a Debian package for each component of the installation. `./dev package` builds and
# tests them.
set(VKCL_MAINTAINER "The VKCLProfileHandler maintainers <maintainers@vkclprofilehandler.example>"
    CACHE STRING "Maintainer of the packages, as Debian's control files name one")
set(VKCL_PACKAGE_REVISION 1 CACHE STRING "Debian revision of the packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vkclprofilehandler)
set(CPACK_PACKAGE_VENDOR "The VKCLProfileHandler maintainers")
set(CPACK_PACKAGE_CONTACT "${VKCL_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # every package has one of its own
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
    GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/debian/Documents.cmake")

set(CPACK_COMPONENTS_ALL development)
if(BUILD_SHARED_LIBS)
  list(APPEND CPACK_COMPONENTS_ALL library)
endif()
if(VKCL_BUILD_TOOL)
  list(APPEND CPACK_COMPONENTS_ALL tool)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE vkclprofilehandler)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${VKCL_PACKAGE_REVISION})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Where the tool's library is before any package holds it.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(vkcl_package_version "${PROJECT_VERSION}-${VKCL_PACKAGE_REVISION}")

# The package of the shared library is named after its SONAME.
get_target_property(vkcl_soversion VKCLProfileHandler SOVERSION)
set(vkcl_library_package libvkclprofilehandler${vkcl_soversion})
set(vkcl_library_dependency "${vkcl_library_package} (= ${vkcl_package_version})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${vkcl_library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
"private data in ICC colour profiles, exact to the byte - library
VKCLProfileHandler keeps the data with which a printer profile was made
(ink splits, ink limits, colour parameters, measurements, whole files) in
private tags of the profile, and reads them back. Every other program skips
them.
.
This package contains the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvkclprofilehandler-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
if(BUILD_SHARED_LIBS)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${vkcl_library_dependency}")
elseif(VKCL_PROFILER_LIBRARY)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libpugixml-dev")
else()
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "liblcms2-dev (>= 2.12), libpugixml-dev")
endif()
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"private data in ICC colour profiles, exact to the byte - development files
VKCLProfileHandler keeps the data with which a printer profile was made
(ink splits, ink limits, colour parameters, measurements, whole files) in
private tags of the profile, and reads them back. Every other program skips
them.
.
This package contains the headers, what the linker needs, the CMake package
and the pkg-config module.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME vkcl)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION graphics)
if(BUILD_SHARED_LIBS)
  set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${vkcl_library_dependency}")
endif()
set(CPACK_COMPONENT_TOOL_DESCRIPTION
"private data in ICC colour profiles, exact to the byte - tool
vkcl shows and changes the private data of ICC printer profiles by name: ink
splits, ink limits, colour parameters, measurements, embedded files. It merges
them into other profiles, strips them, locks finished profiles and checks
profiles against ICC.1. Changes are made on a copy that takes the place of the
profile in one step.")

include(CPack)
