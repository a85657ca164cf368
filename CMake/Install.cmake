# Installed headers, libraries and the package that find_package(Velnor) reads.

include(CMakePackageConfigHelpers)

install(TARGETS VelnorCore VelnorProc EffectKit VelnorHost VelnorStandardHost EXPORT VelnorTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velnor)
install(TARGETS velnor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
get_property(velnor_modules GLOBAL PROPERTY VELNOR_MODULES)
install(TARGETS ${velnor_modules} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/velnor)
foreach(module IN LISTS velnor_modules)
  install(FILES $<TARGET_FILE:${module}>.needed DESTINATION ${CMAKE_INSTALL_LIBDIR}/velnor)
endforeach()
install(FILES Networks/horizon.onnx Networks/u2netp.onnx Networks/u2netp.LICENSE
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/velnor/networks)
# What velnor-words made, where it was built, and the recipes.
foreach(folder man bash-completion zsh fish)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/share/${folder} DESTINATION ${CMAKE_INSTALL_DATADIR} OPTIONAL)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/share/velnor/effects.schema.json
              ${PROJECT_BINARY_DIR}/share/velnor/recipe.schema.json
        DESTINATION ${CMAKE_INSTALL_DATADIR}/velnor OPTIONAL)
install(DIRECTORY Recipes/ DESTINATION ${CMAKE_INSTALL_DATADIR}/velnor/recipes FILES_MATCHING PATTERN "*.json")
install(TARGETS Lumetta LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/velnor/plugins)

foreach(directory Core Proc/Interfaces Proc/Settings Proc/Effects/Kit Proc/Host Proc/StandardHost)
  install(DIRECTORY ${directory}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velnor/${directory} FILES_MATCHING
          PATTERN "*.h" PATTERN "Internal" EXCLUDE PATTERN "Files" EXCLUDE
          PATTERN "*-inl.h" EXCLUDE PATTERN "*X86.h" EXCLUDE)
endforeach()
install(FILES Proc/Effects/Lumetta/EffectBase.h Proc/Effects/Lumetta/EffectBaseCSC.h Proc/Effects/Lumetta/Exceptions.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/velnor/Proc/Effects/Lumetta)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Velnor)
configure_package_config_file(CMake/VelnorConfig.cmake.in ${PROJECT_BINARY_DIR}/VelnorConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VelnorConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VelnorConfig.cmake ${PROJECT_BINARY_DIR}/VelnorConfigVersion.cmake
              CMake/AddPlugin.cmake CMake/Registrator.map
        DESTINATION ${package_dir})
install(EXPORT VelnorTargets NAMESPACE Velnor:: DESTINATION ${package_dir})
