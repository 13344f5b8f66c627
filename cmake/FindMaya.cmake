# Finds a Maya devkit from MAYA_LOCATION (a cache variable, else the environment): the headers in
# <location>/include/maya and the libraries OpenMaya, OpenMayaAnim and Foundation in <location>/lib.
# Defines Maya_FOUND, MAYA_API_VERSION (from maya/MTypes.h) and the imported target Maya::Maya.
if(NOT MAYA_LOCATION AND DEFINED ENV{MAYA_LOCATION})
  set(MAYA_LOCATION "$ENV{MAYA_LOCATION}")
endif()
set(MAYA_LOCATION "${MAYA_LOCATION}" CACHE PATH "Maya installation or devkit folder")

if(MAYA_LOCATION)
  find_path(MAYA_INCLUDE_DIR maya/MFnPlugin.h HINTS "${MAYA_LOCATION}/include" NO_DEFAULT_PATH)
  foreach(lib OpenMaya OpenMayaAnim Foundation)
    find_library(MAYA_${lib}_LIBRARY ${lib} HINTS "${MAYA_LOCATION}/lib" NO_DEFAULT_PATH)
  endforeach()
endif()

if(MAYA_INCLUDE_DIR AND EXISTS "${MAYA_INCLUDE_DIR}/maya/MTypes.h")
  file(STRINGS "${MAYA_INCLUDE_DIR}/maya/MTypes.h" maya_version_line REGEX "#define MAYA_API_VERSION [0-9]+")
  string(REGEX REPLACE ".*#define MAYA_API_VERSION ([0-9]+).*" "\\1" MAYA_API_VERSION "${maya_version_line}")
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Maya
  REQUIRED_VARS MAYA_INCLUDE_DIR MAYA_OpenMaya_LIBRARY MAYA_OpenMayaAnim_LIBRARY MAYA_Foundation_LIBRARY
  VERSION_VAR MAYA_API_VERSION)

if(Maya_FOUND AND NOT TARGET Maya::Maya)
  add_library(Maya::Maya INTERFACE IMPORTED)
  set_target_properties(Maya::Maya PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${MAYA_INCLUDE_DIR}"
    INTERFACE_COMPILE_DEFINITIONS "LINUX;_BOOL;REQUIRE_IOSTREAM"
    INTERFACE_LINK_LIBRARIES "${MAYA_OpenMaya_LIBRARY};${MAYA_OpenMayaAnim_LIBRARY};${MAYA_Foundation_LIBRARY}")
endif()
