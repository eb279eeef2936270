# What `cmake --install` puts where, and the two ways for other projects to find it: a CMake package
# (find_package(tarvik), target tarvik::sdblk) and a pkg-config file (sdblk.pc).
#
# Components, each a package of its own (cmake/TarvikPackage.cmake): python, command, companion (the command
# sdblk), library (the shared one) and dev.
include(CMakePackageConfigHelpers)

set(TARVIK_BASH_COMPLETION_DIR "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" CACHE STRING
    "Where bash looks for completions, below the prefix")
set(TARVIK_ZSH_COMPLETION_DIR "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" CACHE STRING
    "Where zsh looks for completions, below the prefix")

set(TARVIK_EXAMPLES_DIR "${CMAKE_INSTALL_DOCDIR}/examples" CACHE STRING
    "Where the example programs go, below the prefix")

set(libraries sdblk)
if(TARGET sdblk_shared)
  list(APPEND libraries sdblk_shared)
endif()
install(TARGETS tarvik RUNTIME COMPONENT command)
install(
  TARGETS ${libraries}
  EXPORT tarvik
  LIBRARY COMPONENT library NAMELINK_COMPONENT dev
  ARCHIVE COMPONENT dev
)

# The public headers: what sdblk.h includes, getv.h for C++, and what a program needs beside them.
# They keep their folders, as the sources include them by full path.
set(headers_seed seed/getv.h seed/sdblk.h seed/sdblk.hpp seed/whole.h)
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
  install(FILES ${headers_${folder}} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/tarvik/${folder}" COMPONENT dev)
endforeach()

install(FILES man/tarvik.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT command)
install(FILES man/sdblk.3 DESTINATION "${CMAKE_INSTALL_MANDIR}/man3" COMPONENT dev)
install(FILES docs/decisions.md docs/format.md docs/listing.md DESTINATION "${CMAKE_INSTALL_DOCDIR}"
        COMPONENT command
)
install(FILES examples/CMakeLists.txt examples/channels.cpp examples/inspect.cpp examples/stations.c
        DESTINATION "${TARVIK_EXAMPLES_DIR}" COMPONENT dev
)
install(FILES completions/tarvik.bash DESTINATION "${TARVIK_BASH_COMPLETION_DIR}"
        RENAME tarvik COMPONENT command
)
install(FILES completions/_tarvik DESTINATION "${TARVIK_ZSH_COMPLETION_DIR}" COMPONENT command)

set(TARVIK_PYTHON_DIR "lib/python3/dist-packages" CACHE STRING
    "Where the interpreter looks for packages, below the prefix")
# For the Debian package; elsewhere pip installs it, where the interpreter in use looks.
if(TARGET sdblk_python)
  install(TARGETS sdblk_python LIBRARY DESTINATION "${TARVIK_PYTHON_DIR}/sdblk" COMPONENT python
          EXCLUDE_FROM_ALL
  )
  install(DIRECTORY python/sdblk DESTINATION "${TARVIK_PYTHON_DIR}" COMPONENT python EXCLUDE_FROM_ALL
          FILES_MATCHING PATTERN "*.py" PATTERN "*.pyi" PATTERN "py.typed"
  )
  install(FILES docs/python.md DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/python3-sdblk"
          COMPONENT python EXCLUDE_FROM_ALL
  )
endif()
if(TARGET sdblk_command)
  install(TARGETS sdblk_command RUNTIME COMPONENT companion)
  install(FILES man/sdblk.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT companion)
  install(FILES completions/sdblk.bash DESTINATION "${TARVIK_BASH_COMPLETION_DIR}"
          RENAME sdblk COMPONENT companion
  )
  install(FILES completions/_sdblk DESTINATION "${TARVIK_ZSH_COMPLETION_DIR}" COMPONENT companion)
  install(FILES docs/archive.md docs/data.md docs/reading.md docs/stationxml.md
          DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/sdblk" COMPONENT companion
  )
  install(DIRECTORY examples/archive
          DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/sdblk/examples" COMPONENT companion
  )
endif()

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/tarvik")
install(
  EXPORT tarvik
  NAMESPACE tarvik::
  FILE tarvikTargets.cmake
  DESTINATION "${package_dir}"
  COMPONENT dev
)
configure_package_config_file(
  cmake/tarvikConfig.cmake.in "${PROJECT_BINARY_DIR}/tarvikConfig.cmake"
  INSTALL_DESTINATION "${package_dir}"
  NO_SET_AND_CHECK_MACRO
)
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/tarvikConfigVersion.cmake" COMPATIBILITY SameMinorVersion
)
install(FILES "${PROJECT_BINARY_DIR}/tarvikConfig.cmake"
              "${PROJECT_BINARY_DIR}/tarvikConfigVersion.cmake"
        DESTINATION "${package_dir}" COMPONENT dev
)

# The file finds its prefix from where it lies, so an installed copy can be moved as a whole.
file(RELATIVE_PATH pc_to_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" pc_to_prefix "${pc_to_prefix}")
set(pc_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
set(pc_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
foreach(dir IN ITEMS LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    string(TOLOWER "pc_${dir}" variable)
    set(${variable} "${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
# The static library alone leaves it to its user to link the C++ runtime.
set(pc_runtime "-lstdc++ -lm")
set(pc_libs "-lsdblk ${pc_runtime}")
if(BUILD_SHARED_LIBS OR TARVIK_SHARED)
  set(pc_libs "-lsdblk")
endif()
configure_file(cmake/sdblk.pc.in "${PROJECT_BINARY_DIR}/sdblk.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/sdblk.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
        COMPONENT dev
)
