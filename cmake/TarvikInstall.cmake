# What `cmake --install` puts where, and the two ways for other projects to find it: a CMake package
# (find_package(tarvik), target tarvik::sdblk) and a pkg-config file (sdblk.pc).
include(CMakePackageConfigHelpers)

set(libraries sdblk)
if(TARGET sdblk_shared)
  list(APPEND libraries sdblk_shared)
endif()
if(TARGET tarvik)
  install(TARGETS tarvik)
endif()
install(TARGETS ${libraries} EXPORT tarvik)

# Headers keep their folders, as the sources include them by full path.
set(headers_seed seed/getv.h seed/sdblk.h)
set(headers_support
    support/announce.h
    support/api.h
    support/arr.h
    support/byteorder.h
    support/elog.h
    support/epoch.h
    support/exec.h
    support/tbl.h
    support/text.h
)
foreach(folder IN ITEMS seed support)
  tarvik_existing(headers ${headers_${folder}})
  install(FILES ${headers} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tarvik/${folder}")
endforeach()

tarvik_existing(pages1 man/tarvik.1)
tarvik_existing(pages3 man/sdblk.3)
install(FILES ${pages1} DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES ${pages3} DESTINATION "${CMAKE_INSTALL_MANDIR}/man3")

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/tarvik")
install(EXPORT tarvik NAMESPACE tarvik:: FILE tarvikTargets.cmake DESTINATION "${package_dir}")
configure_package_config_file(
  cmake/tarvikConfig.cmake.in "${PROJECT_BINARY_DIR}/tarvikConfig.cmake"
  INSTALL_DESTINATION "${package_dir}"
  NO_SET_AND_CHECK_MACRO
)
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/tarvikConfigVersion.cmake" COMPATIBILITY SameMinorVersion
)
install(FILES "${PROJECT_BINARY_DIR}/tarvikConfig.cmake"
              "${PROJECT_BINARY_DIR}/tarvikConfigVersion.cmake" DESTINATION "${package_dir}"
)

configure_file(cmake/sdblk.pc.in "${PROJECT_BINARY_DIR}/sdblk.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/sdblk.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
