# Installs the build into a fresh prefix, then configures, builds and runs the consumer project and the sample plug-in
# against that prefix, and has the installed command check the plug-in.

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${work_dir})
run(${CMAKE_COMMAND} --install ${build_dir} --prefix ${work_dir}/prefix)
function(build project folder)
  run(${CMAKE_COMMAND} -S ${project} -B ${folder} -G ${generator}
      -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_PREFIX_PATH=${work_dir}/prefix)
  run(${CMAKE_COMMAND} --build ${folder})
endfunction()
build(${source_dir} ${work_dir}/build)
build(${source_dir}/../../Samples/plugin ${work_dir}/plugin)
set(plugin ${work_dir}/plugin/libInversion.so)

execute_process(COMMAND ${work_dir}/build/consumer ${plugin}
  OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
message(STATUS "The consumer printed:\n${listing}")
foreach(expected SettingsColorspaceConverter SettingsResizer SettingsEffectWhiteBalance SettingsEffectPixelate
    "SettingsEffectInversion Velnor from ${plugin}\n" "inverted 245 235 225\n")
  if(NOT listing MATCHES "${expected}")
    message(FATAL_ERROR "The consumer does not print ${expected}")
  endif()
endforeach()

# What stands in the kit stays in the plug-in that was made with it.
execute_process(COMMAND nm --dynamic --defined-only --format=just-symbols ${plugin}
  OUTPUT_VARIABLE exports COMMAND_ERROR_IS_FATAL ANY)
if(NOT exports STREQUAL "Registrator\n")
  message(FATAL_ERROR "The plug-in exports more or less than Registrator: ${exports}")
endif()

run(${work_dir}/prefix/bin/velnor check ${plugin} --level 3)
# As one of the user's own, found without being named, in a folder that nobody else had a hand in.
execute_process(COMMAND mktemp --directory OUTPUT_VARIABLE own OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ERROR_IS_FATAL ANY)
file(COPY ${plugin} DESTINATION ${own})
execute_process(COMMAND ${CMAKE_COMMAND} -E env VELNOR_PLUGIN_PATH=${own}
  ${work_dir}/prefix/bin/velnor effects OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE ${own})
if(NOT listing MATCHES "inversion +Turns colours into their opposites. From[ \n]+${own}/libInversion.so")
  message(FATAL_ERROR "The plug-in is not found in its folder:\n${listing}")
endif()

set(tree ${work_dir}/prefix)
include(${CMAKE_CURRENT_LIST_DIR}/CheckRunPaths.cmake)
