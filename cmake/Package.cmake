# Versioned shared libraries, exported names, and the installed package:
# libraries, headers, the program, a CMake package and a pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Each library exports the names its version script lists. The script is made
# from the library's own objects just before the link (scripts/export-map.sh
# says which names are public), so a new class needs no export macro.
# Inline member functions are compiled by every user anyway: hidden.
function(orv_export_public_names target c_prefix)
  set(map ${CMAKE_BINARY_DIR}/lib${target}.map)
  set(extra ${CMAKE_SOURCE_DIR}/cmake/exports/lib${target}.extra)
  target_compile_options(${target} PRIVATE -fvisibility-inlines-hidden)
  add_custom_command(TARGET ${target} PRE_LINK
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/export-map.sh ${map} ${c_prefix} ${extra} "$<TARGET_OBJECTS:${target}>"
    COMMAND_EXPAND_LISTS
    VERBATIM)
  target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
  # A change of the rule or of the extra names relinks.
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${CMAKE_SOURCE_DIR}/scripts/export-map.sh)
  if(EXISTS ${extra})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${extra})
  endif()
  set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                                             INSTALL_RPATH "$ORIGIN")
endfunction()

orv_export_public_names(orv orv)
install(TARGETS orv EXPORT orvreduceTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orv)
if(TARGET orvreduce)
  orv_export_public_names(orvreduce orvreduce)
  install(TARGETS orvreduce EXPORT orvreduceTargets
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orv)
endif()
if(TARGET orvreduce_cli)
  file(RELATIVE_PATH bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(orvreduce_cli PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
  install(TARGETS orvreduce_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# Headers keep their paths from the repository root under include/orv, so
# that #include "orv/Array.h" and "reduce/store/ReduceObjectArray.h" read the
# same in the tree and against the installed package.
install(DIRECTORY ${CMAKE_SOURCE_DIR}/orv ${CMAKE_SOURCE_DIR}/reduce
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orv
        FILES_MATCHING PATTERN "*.h")

set(cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/orvreduce)
install(EXPORT orvreduceTargets NAMESPACE orvreduce:: DESTINATION ${cmake_dir})
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/orvreduceConfig.cmake.in
                              ${CMAKE_BINARY_DIR}/orvreduceConfig.cmake INSTALL_DESTINATION ${cmake_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/orvreduceConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/orvreduceConfig.cmake ${CMAKE_BINARY_DIR}/orvreduceConfigVersion.cmake
        DESTINATION ${cmake_dir})

# pkg-config: prefix-relative paths, so the package may be moved as a whole.
file(RELATIVE_PATH pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc_to_prefix "${pc_to_prefix}")
configure_file(${CMAKE_SOURCE_DIR}/cmake/orvreduce.pc.in ${CMAKE_BINARY_DIR}/orvreduce.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/orvreduce.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
