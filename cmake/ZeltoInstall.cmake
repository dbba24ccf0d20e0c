# What `cmake --install` puts in a prefix, and the two CMake packages a host
# application finds there:
#   find_package(weftcore CONFIG)             weftcore::weftcore, weftcore::host
#   find_package(component_zelto_mesh CONFIG) component_zelto_mesh::headers,
#                                             component_zelto_mesh::mesh, component_zelto_mesh::sim
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ZELTO_WEFTCORE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/weftcore)
set(ZELTO_PACKAGE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/component_zelto_mesh)
set(ZELTO_DATA_DIR ${CMAKE_INSTALL_DATADIR}/component_zelto_mesh)
# Client headers keep their in-tree paths ("mesh/mesh_frame_data.h") below a
# directory of their own, so that their generic directory names stay out of
# the prefix's include/.
set(ZELTO_CLIENT_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/component_zelto_mesh)

# zelto_install_package(<name> <destination> [PATH_VARS ...]): the package's
# config, from cmake/<name>Config.cmake.in, and its version file, installed.
function(zelto_install_package name destination)
  set(stem ${PROJECT_BINARY_DIR}/package/${name})
  configure_package_config_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/${name}Config.cmake.in
    ${stem}Config.cmake INSTALL_DESTINATION ${destination} ${ARGN})
  write_basic_package_version_file(${stem}ConfigVersion.cmake COMPATIBILITY SameMinorVersion)
  install(FILES ${stem}Config.cmake ${stem}ConfigVersion.cmake DESTINATION ${destination})
endfunction()

# Run paths of the installed files. Programs find the libraries from bin/.
# Libraries look beside themselves: the plug-ins for libweftcore.so, and
# libweftcore_host.so for the plug-ins it dlopens by bare name, so a host
# program anywhere finds the components installed next to the host library.
if(APPLE)
  set(ZELTO_ORIGIN @loader_path)
else()
  set(ZELTO_ORIGIN \$ORIGIN)
endif()
file(RELATIVE_PATH ZELTO_BIN_TO_LIB ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(zelto-mesh PROPERTIES INSTALL_RPATH "${ZELTO_ORIGIN}/${ZELTO_BIN_TO_LIB}")
set_target_properties(weftcore_host component_zelto_mesh component_zelto_sim
  PROPERTIES INSTALL_RPATH "${ZELTO_ORIGIN}")

# The framework interface and the host library.
set_target_properties(weftcore_host PROPERTIES EXPORT_NAME host)
install(TARGETS weftcore weftcore_host EXPORT weftcoreTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/weftcore/include/
  ${PROJECT_SOURCE_DIR}/weftcore/host/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT weftcoreTargets NAMESPACE weftcore:: DESTINATION ${ZELTO_WEFTCORE_CMAKE_DIR})

# msgpack-c travels as a header dependency: the package config looks for the
# headers itself and defines them with the build's own definitions, so that
# the records a client encodes have the bytes the component decodes.
get_target_property(ZELTO_MSGPACK_DEFINITIONS zelto_msgpack INTERFACE_COMPILE_DEFINITIONS)
zelto_install_package(weftcore ${ZELTO_WEFTCORE_CMAKE_DIR})

# The component: the records and names a client exchanges with the mesh
# source, and the two plug-ins as imported targets whose files a host loads
# (never links: they are dlopened).
add_library(zelto_client_headers INTERFACE)
target_include_directories(zelto_client_headers INTERFACE
  $<INSTALL_INTERFACE:${ZELTO_CLIENT_INCLUDE_DIR}>)
target_link_libraries(zelto_client_headers INTERFACE weftcore)
set_target_properties(zelto_client_headers PROPERTIES EXPORT_NAME headers)
set_target_properties(component_zelto_mesh PROPERTIES EXPORT_NAME mesh)
set_target_properties(component_zelto_sim PROPERTIES EXPORT_NAME sim)
install(TARGETS zelto_client_headers component_zelto_mesh component_zelto_sim
  EXPORT component_zelto_meshTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(header
    component/zelto_mesh_constants.h
    logging/zelto_logger.h
    masking/mask_settings_property.h
    mesh/mesh_algorithm_config_property.h
    mesh/mesh_frame_data.h
    properties/zelto_log_level_property.h
    properties/zelto_runtime_settings_property.h
    properties/zelto_segmentation_properties.h
    properties/zelto_tof_properties.h)
  get_filename_component(header_dir ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${header}
    DESTINATION ${ZELTO_CLIENT_INCLUDE_DIR}/${header_dir})
endforeach()
install(EXPORT component_zelto_meshTargets NAMESPACE component_zelto_mesh::
  DESTINATION ${ZELTO_PACKAGE_CMAKE_DIR})
zelto_install_package(component_zelto_mesh ${ZELTO_PACKAGE_CMAKE_DIR} PATH_VARS ZELTO_DATA_DIR)

# The command-line host, the example recording and the documents.
install(TARGETS zelto-mesh RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples ${PROJECT_SOURCE_DIR}/docs
  DESTINATION ${ZELTO_DATA_DIR})
install(FILES ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${ZELTO_DATA_DIR})
