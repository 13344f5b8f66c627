# Scene export as part of a CMake build.
#
#   include(path/to/Ostrex.cmake)
#   ostrex_export(TARGET assets SCENES scenes/hero.gltf scenes/level.fbx
#                 [PROFILE name] [OPTIONS key=value ...] [OUTPUT_DIR dir])
#
# Adds one custom command per scene, writing OUTPUT_DIR/<scene name>.tvo (default OUTPUT_DIR:
# ${CMAKE_CURRENT_BINARY_DIR}/assets), and a target TARGET, built by default, that depends on all
# of them. Each command passes --depfile, so the build tool learns everything the export read
# (the scene, its buffers and textures, the profile store) and re-exports exactly the scenes one of
# whose inputs changed; the scenes are exported in parallel as the build tool schedules them.
# The outputs are listed in the target's property OSTREX_OUTPUTS.
#
# The exporter is OSTREX_EXECUTABLE (a cache variable; searched on the PATH as "ostrex" when not
# set). Dependency files need the Ninja or Makefile generators and policy CMP0116 set to NEW
# (cmake_minimum_required(VERSION 3.20) or later does that).
include_guard(GLOBAL)

function(ostrex_export)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "TARGET;PROFILE;OUTPUT_DIR" "SCENES;OPTIONS")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "ostrex_export: unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT arg_TARGET)
    message(FATAL_ERROR "ostrex_export: TARGET is required")
  endif()
  if(NOT arg_SCENES)
    message(FATAL_ERROR "ostrex_export: SCENES needs at least one scene file")
  endif()
  if(NOT OSTREX_EXECUTABLE)
    find_program(OSTREX_EXECUTABLE ostrex REQUIRED)
  endif()
  if(NOT arg_OUTPUT_DIR)
    set(arg_OUTPUT_DIR "${CMAKE_CURRENT_BINARY_DIR}/assets")
  endif()
  get_filename_component(output_dir "${arg_OUTPUT_DIR}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_BINARY_DIR}")
  file(MAKE_DIRECTORY "${output_dir}")

  set(options_args "")
  if(arg_PROFILE)
    list(APPEND options_args --profile "${arg_PROFILE}")
  endif()
  foreach(setting IN LISTS arg_OPTIONS)
    list(APPEND options_args --set "${setting}")
  endforeach()

  set(outputs "")
  set(stems "")
  foreach(scene IN LISTS arg_SCENES)
    get_filename_component(scene_path "${scene}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
    get_filename_component(stem "${scene_path}" NAME_WLE)
    if(stem IN_LIST stems)
      message(FATAL_ERROR "ostrex_export: two scenes named '${stem}' would write the same output")
    endif()
    list(APPEND stems "${stem}")
    set(output "${output_dir}/${stem}.tvo")
    add_custom_command(
      OUTPUT "${output}"
      COMMAND "${OSTREX_EXECUTABLE}" "${scene_path}" "${output}" --depfile "${output}.d" ${options_args}
      DEPENDS "${scene_path}" "${OSTREX_EXECUTABLE}"
      DEPFILE "${output}.d"
      COMMENT "Exporting scene ${stem}"
      VERBATIM)
    list(APPEND outputs "${output}")
  endforeach()
  add_custom_target(${arg_TARGET} ALL DEPENDS ${outputs})
  set_property(TARGET ${arg_TARGET} PROPERTY OSTREX_OUTPUTS ${outputs})
endfunction()
