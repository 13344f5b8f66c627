# cmake -DOSTREX=... -DNINJA=... -DSOURCE_DIR=<project> -DWORK_DIR=<scratch> -P ExampleBuild.cmake
# Copies the example with its scenes into WORK_DIR (touching files must not change the project),
# then checks which scenes each build exports.
foreach(var OSTREX NINJA SOURCE_DIR WORK_DIR)
  if(NOT DEFINED ${var})
    message(FATAL_ERROR "${var} is not set")
  endif()
endforeach()

file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}/samples" "${WORK_DIR}/cmake")
file(COPY "${SOURCE_DIR}/samples/pipeline" "${SOURCE_DIR}/samples/sample.gltf" "${SOURCE_DIR}/samples/checker.png"
     DESTINATION "${WORK_DIR}/samples")
file(COPY "${SOURCE_DIR}/cmake/Ostrex.cmake" DESTINATION "${WORK_DIR}/cmake")

execute_process(COMMAND "${CMAKE_COMMAND}" -S "${WORK_DIR}/samples/pipeline" -B "${WORK_DIR}/build" -G Ninja
                        "-DCMAKE_MAKE_PROGRAM=${NINJA}" "-DOSTREX_EXECUTABLE=${OSTREX}"
                RESULT_VARIABLE code OUTPUT_VARIABLE log ERROR_VARIABLE log)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "configuring the example failed:\n${log}")
endif()

# Builds and compares the scenes exported (in the order reported, sorted) with the expected list.
function(build_expect step)
  execute_process(COMMAND "${CMAKE_COMMAND}" --build "${WORK_DIR}/build"
                  RESULT_VARIABLE code OUTPUT_VARIABLE log ERROR_VARIABLE log)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${step}: the build failed:\n${log}")
  endif()
  string(REGEX MATCHALL "Exporting scene [^\n]+" lines "${log}")
  list(TRANSFORM lines REPLACE "Exporting scene " "")
  list(SORT lines)
  if(NOT "${lines}" STREQUAL "${ARGN}")
    message(FATAL_ERROR "${step}: exported [${lines}], expected [${ARGN}]:\n${log}")
  endif()
endfunction()

build_expect("first build" "crate ü" "sample")
foreach(scene "crate ü" "sample")
  if(NOT EXISTS "${WORK_DIR}/build/assets/${scene}.tvo")
    message(FATAL_ERROR "the first build did not write ${scene}.tvo")
  endif()
endforeach()
build_expect("unchanged rebuild")
file(TOUCH "${WORK_DIR}/samples/checker.png")
build_expect("after touching the texture" "sample")
file(TOUCH "${WORK_DIR}/samples/pipeline/crate ü.mtl")
build_expect("after touching the material file" "crate ü")
