# The libraries this one stands on. Each is looked for on the system first; FetchContent is the
# fallback, so that a source folder given as FETCHCONTENT_SOURCE_DIR_<NAME> serves a cross build.
include(FetchContent)

set(VKCL_PROFILER_LIBRARY "" CACHE FILEPATH
    "The maker's own profiler library to link; then nothing of ours is compiled in its place")
if(VKCL_PROFILER_LIBRARY AND NOT VKCL_BUILD_TESTS AND NOT VKCL_BUILD_EXAMPLES)
  return()  # nobody asks for Little CMS 2
endif()

# Little CMS 2, behind src/platform/profiler, and the other reader of tests and examples.
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND AND NOT FETCHCONTENT_SOURCE_DIR_LCMS2)
  pkg_check_modules(LCMS2 QUIET IMPORTED_TARGET lcms2>=2.12)
endif()
if(TARGET PkgConfig::LCMS2)
  add_library(vkcl_lcms2 INTERFACE)
  target_link_libraries(vkcl_lcms2 INTERFACE PkgConfig::LCMS2)
else()
  FetchContent_Declare(lcms2 URL "https://github.com/mm2/Little-CMS/archive/refs/tags/lcms2.14.tar.gz")
  FetchContent_GetProperties(lcms2)
  if(NOT lcms2_POPULATED)
    FetchContent_Populate(lcms2)
  endif()
  file(GLOB lcms2_sources CONFIGURE_DEPENDS "${lcms2_SOURCE_DIR}/src/*.c")
  if(NOT lcms2_sources)
    message(FATAL_ERROR "Little CMS 2 is not there: install liblcms2-dev, or set "
                        "FETCHCONTENT_SOURCE_DIR_LCMS2 to its source folder")
  endif()
  enable_language(C)
  add_library(vkcl_lcms2 STATIC ${lcms2_sources})
  target_include_directories(vkcl_lcms2 SYSTEM PUBLIC "$<BUILD_INTERFACE:${lcms2_SOURCE_DIR}/include>")
  set_target_properties(vkcl_lcms2 PROPERTIES POSITION_INDEPENDENT_CODE ON)
endif()
