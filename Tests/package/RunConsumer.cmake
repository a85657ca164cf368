# Installs the build into a fresh prefix, then configures, builds and runs the consumer project against that prefix.

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${work_dir})
run(${CMAKE_COMMAND} --install ${build_dir} --prefix ${work_dir}/prefix)
run(${CMAKE_COMMAND} -S ${source_dir} -B ${work_dir}/build -G ${generator}
    -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_PREFIX_PATH=${work_dir}/prefix)
run(${CMAKE_COMMAND} --build ${work_dir}/build)

execute_process(COMMAND ${work_dir}/build/consumer ${work_dir}/build/libinversion.so
  OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
message(STATUS "The consumer printed:\n${listing}")
foreach(expected SettingsColorspaceConverter SettingsResizer SettingsEffectWhiteBalance SettingsEffectPixelate
    "SettingsEffectInversion Velnor from libinversion.so\n" "inverted 245 235 225\n")
  if(NOT listing MATCHES "${expected}")
    message(FATAL_ERROR "The consumer does not print ${expected}")
  endif()
endforeach()

# What stands in the kit stays in the plug-in that was made with it.
execute_process(COMMAND nm --dynamic --defined-only --format=just-symbols ${work_dir}/build/libinversion.so
  OUTPUT_VARIABLE exports COMMAND_ERROR_IS_FATAL ANY)
if(NOT exports STREQUAL "Registrator\n")
  message(FATAL_ERROR "The plug-in exports more or less than Registrator: ${exports}")
endif()

set(tree ${work_dir}/prefix)
include(${CMAKE_CURRENT_LIST_DIR}/CheckRunPaths.cmake)
