# velnor_add_plugin(NAME SOURCE...): a plug-in of the effects in the sources, which define Registrator. It stands on the
# kit and the contract, and exports Registrator and nothing else. Here, and in projects that find the package.
function(velnor_add_plugin name)
  set(exports ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/Registrator.map)
  add_library(${name} MODULE ${ARGN})
  target_link_libraries(${name} PRIVATE Velnor::EffectKit)
  target_link_options(${name} PRIVATE -Wl,--version-script=${exports} -Wl,--no-undefined)
  set_target_properties(${name} PROPERTIES LINK_DEPENDS ${exports} CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
endfunction()
