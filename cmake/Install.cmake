# SPDX-License-Identifier: MIT
# The package for applications: libraries, public headers, CMake package and pkg-config file. All of
# it is found relative to where it stands, so a prefix may be moved.
include(CMakePackageConfigHelpers)

install(TARGETS QvGenICam QvApi_TL QvApi_IP EXPORT QvApiTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

# The umbrella header gives all of these; a header that it does not reach stays inside.
set(headerDir ${CMAKE_INSTALL_INCLUDEDIR}/QvApi)
install(FILES include/QvApi/QvApi_IP.h DESTINATION ${headerDir})
foreach(room QvSDKCommon QvApi_IP)
  file(GLOB interfaceHeaders CONFIGURE_DEPENDS ${room}/IQv*.h)
  install(FILES ${interfaceHeaders} DESTINATION ${headerDir}/${room})
endforeach()
install(FILES
  QvSDKCommon/CQvAutoPtr.h QvSDKCommon/EventObject.h QvSDKCommon/QvApi_Exception.h
  QvSDKCommon/QvExport.h QvSDKCommon/QvGenTLLib.h QvSDKCommon/QvInitialize.h
  QvSDKCommon/QvPixelComponent.h QvSDKCommon/QvPixelComponentCode.h QvSDKCommon/QvPixelFormat.h
  QvSDKCommon/QvXMLFile.h
  DESTINATION ${headerDir}/QvSDKCommon)
install(FILES QvApi_IP/ColorMap.h QvApi_IP/QvApi_IP.h QvApi_IP/QvFilterPtrList.h
        DESTINATION ${headerDir}/QvApi_IP)
foreach(part Base GenApi)
  file(GLOB genicamHeaders CONFIGURE_DEPENDS GenICam/${part}/*.h)
  install(FILES ${genicamHeaders} DESTINATION ${headerDir}/GenICam/${part})
endforeach()

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/QvApi)
install(EXPORT QvApiTargets NAMESPACE QvApi:: DESTINATION ${packageDir})
configure_package_config_file(cmake/QvApiConfig.cmake.in ${CMAKE_BINARY_DIR}/QvApiConfig.cmake
                              INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/QvApiConfigVersion.cmake
                                 VERSION 1.1 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/QvApiConfig.cmake ${CMAKE_BINARY_DIR}/QvApiConfigVersion.cmake
        DESTINATION ${packageDir})

file(RELATIVE_PATH pkgConfigToPrefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/QvApi_IP.pc.in ${CMAKE_BINARY_DIR}/QvApi_IP.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/QvApi_IP.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
