# The libraries this one stands on. Each is looked for on the system first; FetchContent is the
# fallback, so that a source folder given as FETCHCONTENT_SOURCE_DIR_<NAME> serves a cross build.
include(FetchContent)

set(VKCL_PROFILER_LIBRARY "" CACHE FILEPATH
    "The maker's own profiler library to link; then nothing of ours is compiled in its place")

# Sets <name>_SOURCE_DIR to a library's source folder in which `file` must be.
macro(vkcl_source name url file package)
  FetchContent_Declare(${name} URL "${url}")
  FetchContent_GetProperties(${name})
  if(NOT ${name}_POPULATED)
    FetchContent_Populate(${name})
  endif()
  if(NOT EXISTS "${${name}_SOURCE_DIR}/${file}")
    string(TOUPPER ${name} vkcl_upper)
    message(FATAL_ERROR "${name} is not there: install ${package}, or set "
                        "FETCHCONTENT_SOURCE_DIR_${vkcl_upper} to its source folder")
  endif()
endmacro()

# pugixml, behind src/platform/axml.
if(NOT FETCHCONTENT_SOURCE_DIR_PUGIXML)
  find_package(pugixml QUIET)
endif()
if(TARGET pugixml::pugixml)
  add_library(vkcl_pugixml INTERFACE)
  target_link_libraries(vkcl_pugixml INTERFACE pugixml::pugixml)
else()
  vkcl_source(pugixml "https://github.com/zeux/pugixml/archive/refs/tags/v1.13.tar.gz"
              src/pugixml.cpp libpugixml-dev)
  add_library(vkcl_pugixml STATIC "${pugixml_SOURCE_DIR}/src/pugixml.cpp")
  target_include_directories(vkcl_pugixml SYSTEM PUBLIC
                             "$<BUILD_INTERFACE:${pugixml_SOURCE_DIR}/src>")
  set_target_properties(vkcl_pugixml PROPERTIES POSITION_INDEPENDENT_CODE ON)
endif()

# nlohmann-json (headers only), behind the documents of src/inspect.
if(NOT FETCHCONTENT_SOURCE_DIR_NLOHMANN_JSON)
  find_package(nlohmann_json QUIET)
endif()
add_library(vkcl_json INTERFACE)
if(TARGET nlohmann_json::nlohmann_json)
  target_link_libraries(vkcl_json INTERFACE nlohmann_json::nlohmann_json)
else()
  vkcl_source(nlohmann_json "https://github.com/nlohmann/json/archive/refs/tags/v3.11.2.tar.gz"
              include/nlohmann/json.hpp nlohmann-json3-dev)
  target_include_directories(vkcl_json SYSTEM INTERFACE
                             "$<BUILD_INTERFACE:${nlohmann_json_SOURCE_DIR}/include>")
endif()

if(VKCL_PROFILER_LIBRARY AND NOT VKCL_BUILD_TESTS AND NOT VKCL_BUILD_EXAMPLES
   AND NOT VKCL_BUILD_BENCH)
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
  vkcl_source(lcms2 "https://github.com/mm2/Little-CMS/archive/refs/tags/lcms2.14.tar.gz"
              src/cmsio0.c liblcms2-dev)
  file(GLOB lcms2_sources CONFIGURE_DEPENDS "${lcms2_SOURCE_DIR}/src/*.c")
  enable_language(C)
  add_library(vkcl_lcms2 STATIC ${lcms2_sources})
  target_include_directories(vkcl_lcms2 SYSTEM PUBLIC "$<BUILD_INTERFACE:${lcms2_SOURCE_DIR}/include>")
  set_target_properties(vkcl_lcms2 PROPERTIES POSITION_INDEPENDENT_CODE ON)
endif()
