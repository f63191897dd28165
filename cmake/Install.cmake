# What `make install` puts below the prefix.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VireoClientMgmt)

install(TARGETS vireod vireoctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(VIREO_IMAGE)
    install(TARGETS vireo-image RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(TARGETS vireo_client_mgmt LIBRARY DESTINATION ${VIREO_PLUGIN_DIR})
install(TARGETS vireo_declarations vireo_data vireo_platform vireo_client
        EXPORT VireoClientMgmtTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT VireoClientMgmtTargets NAMESPACE Vireo:: DESTINATION ${package_dir})

install(DIRECTORY platform include DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vireo
        FILES_MATCHING PATTERN "*.h")
install(FILES client/LocalMgmtClient.h client/CallStatus.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vireo/client)
install(DIRECTORY config DESTINATION ${CMAKE_INSTALL_DATADIR}/vireo FILES_MATCHING PATTERN "*.xml" PATTERN "vireod.conf")
install(DIRECTORY mibs DESTINATION ${CMAKE_INSTALL_DATADIR}/vireo FILES_MATCHING PATTERN "*-MIB.txt"
        PATTERN "SNMPv2-*.txt")

# For a supervisor: the unit, and the user that it runs as.
if(VIREO_SYSTEMD)
    set(VIREO_SERVICE_TYPE notify)
else()
    set(VIREO_SERVICE_TYPE exec)
endif()
# The prefix is known at last when it is installed.
install(CODE "
    set(VIREO_SERVICE_TYPE ${VIREO_SERVICE_TYPE})
    set(VIREO_BINDIR \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    set(VIREO_DOCDIR \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DOCDIR}\")
    configure_file(\"${CMAKE_SOURCE_DIR}/cmake/systemd/vireod.service.in\"
                   \"${CMAKE_CURRENT_BINARY_DIR}/vireod.service\" @ONLY)
")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vireod.service DESTINATION lib/systemd/system)
install(FILES cmake/systemd/vireo.sysusers.conf DESTINATION lib/sysusers.d RENAME vireo.conf)
install(FILES docs/maintenance.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

configure_package_config_file(cmake/VireoClientMgmtConfig.cmake.in VireoClientMgmtConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(VireoClientMgmtConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/VireoClientMgmtConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/VireoClientMgmtConfigVersion.cmake
        DESTINATION ${package_dir})

# Relative, so that the files are right below any prefix and DESTDIR.
file(RELATIVE_PATH VIREO_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(package vireo-client vireo-platform)
    configure_file(cmake/${package}.pc.in ${package}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${package}.pc
            DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
