# The plug-in sources that build unchanged against a Maya devkit and against the stand-in headers
# of tests/maya. HostWindows.cpp (the Qt windows) is the plug-in's alone.
set(OSTREX_MAYA_DIR ${CMAKE_CURRENT_LIST_DIR})
set(OSTREX_MAYA_SOURCES
  ${OSTREX_MAYA_DIR}/BoneWeights.cpp
  ${OSTREX_MAYA_DIR}/ExportSettings.cpp
  ${OSTREX_MAYA_DIR}/HostLog.cpp
  ${OSTREX_MAYA_DIR}/Materials.cpp
  ${OSTREX_MAYA_DIR}/MelLauncher.cpp
  ${OSTREX_MAYA_DIR}/MeshExtraction.cpp
  ${OSTREX_MAYA_DIR}/MeshWalk.cpp
  ${OSTREX_MAYA_DIR}/PluginMain.cpp
  ${OSTREX_MAYA_DIR}/SceneWalk.cpp
  ${OSTREX_MAYA_DIR}/SkinExtraction.cpp
  ${OSTREX_MAYA_DIR}/SkinWeights.cpp
  ${OSTREX_MAYA_DIR}/Transforms.cpp
  ${OSTREX_MAYA_DIR}/Translator.cpp
  ${OSTREX_MAYA_DIR}/UserData.cpp)
