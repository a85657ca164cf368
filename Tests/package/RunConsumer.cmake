# Installs the build into a fresh prefix, then configures, builds and runs the consumer project against that prefix.

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${work_dir})
run(${CMAKE_COMMAND} --install ${build_dir} --prefix ${work_dir}/prefix)
run(${CMAKE_COMMAND} -S ${source_dir} -B ${work_dir}/build -G ${generator}
    -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_PREFIX_PATH=${work_dir}/prefix)
run(${CMAKE_COMMAND} --build ${work_dir}/build)

execute_process(COMMAND ${work_dir}/build/consumer OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
message(STATUS "The consumer printed:\n${listing}")
foreach(expected SettingsColorspaceConverter SettingsResizer SettingsEffectWhiteBalance SettingsEffectPixelate)
  if(NOT listing MATCHES "${expected} ")
    message(FATAL_ERROR "The installed host does not list ${expected}")
  endif()
endforeach()

set(tree ${work_dir}/prefix)
include(${CMAKE_CURRENT_LIST_DIR}/CheckRunPaths.cmake)
