# Install rules: libraries, headers, the CMake package atrium_xml:: and a pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(ATRIUM_XML_INSTALL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/atrium_xml")
set(ATRIUM_XML_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/atrium_xml")

install(TARGETS atrium_xml login_service_default login_service_api
                ktl_xml kosa qev_bounded ktl_base64 qev_random atrium_test_control
        EXPORT atrium_xml_targets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${ATRIUM_XML_INSTALL_INCLUDEDIR})

install(FILES
          ${PROJECT_SOURCE_DIR}/service/login/src/atrium_xml/atrium_xml.h
          ${PROJECT_BINARY_DIR}/generated/atrium_xml_config.h
          ${PROJECT_SOURCE_DIR}/service/login/include/login_records.h
          ${PROJECT_SOURCE_DIR}/platform/login_service/login_service.h
          ${PROJECT_SOURCE_DIR}/platform/login_service/login_service_default.h
          ${PROJECT_SOURCE_DIR}/platform/xml/ktl_xml.h
          ${PROJECT_SOURCE_DIR}/platform/osa/kosa.h
          ${PROJECT_SOURCE_DIR}/platform/bounded/qev_bounded.h
          ${PROJECT_SOURCE_DIR}/platform/base64/ktl_base64.h
          ${PROJECT_SOURCE_DIR}/platform/random/qev_random.h
          ${PROJECT_SOURCE_DIR}/platform/test_control/atrium_test_control.h
        DESTINATION ${ATRIUM_XML_INSTALL_INCLUDEDIR})

install(EXPORT atrium_xml_targets
        NAMESPACE atrium_xml::
        FILE atrium_xmlTargets.cmake
        DESTINATION ${ATRIUM_XML_CMAKEDIR})

# pugixml compiled into ktl_xml is no dependency of the installed package.
if(ATRIUM_XML_PUGIXML STREQUAL "source")
  set(ATRIUM_XML_FIND_PUGIXML "# pugixml is compiled into ktl_xml")
  set(ATRIUM_XML_PC_PUGIXML "")
else()
  set(ATRIUM_XML_FIND_PUGIXML "find_dependency(pugixml CONFIG)")
  set(ATRIUM_XML_PC_PUGIXML "pugixml ")
endif()
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/atrium_xmlConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/atrium_xmlConfig.cmake
                              INSTALL_DESTINATION ${ATRIUM_XML_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/atrium_xmlConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/atrium_xmlConfig.cmake
              ${PROJECT_BINARY_DIR}/atrium_xmlConfigVersion.cmake
        DESTINATION ${ATRIUM_XML_CMAKEDIR})

# The .pc file finds the prefix from its own place, so the installation can be moved.
file(RELATIVE_PATH ATRIUM_XML_PC_TO_PREFIX "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file(${PROJECT_SOURCE_DIR}/cmake/atrium_xml.pc.in
               ${PROJECT_BINARY_DIR}/atrium_xml.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/atrium_xml.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
