# Debian packages, made by `cpack` in the build tree or by scripts/package.sh: the commands, the shared
# library where it is built, and what programs on the library are compiled with.  Debian's documents
# are added by cmake/debian_staging.cmake.
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarvik)
set(CPACK_PACKAGE_VENDOR "${TARVIK_MAKER}")
set(CPACK_PACKAGE_CONTACT "${TARVIK_MAKER} <${TARVIK_SUPPORT_EMAIL}>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
# Each package has its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE
)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/debian_staging.cmake")
set(CPACK_TARVIK_SOURCE_DIR "${PROJECT_SOURCE_DIR}")
set(CPACK_TARVIK_STRIP "${CMAKE_STRIP}")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(volume_text
    "A SEED volume (Standard for the Exchange of Earthquake Data) holds the
metadata of seismic stations and their recordings."
)

set(CPACK_COMPONENTS_ALL command dev)
set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME tarvik)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION science)
set(CPACK_DEBIAN_COMMAND_DESCRIPTION
    "says what is in a SEED volume
${volume_text}
This command lists every field of every block, sums up stations, channels and
responses, or counts the blocks."
)

if(TARGET sdblk_command)
  list(APPEND CPACK_COMPONENTS_ALL companion)
  set(CPACK_DEBIAN_COMPANION_PACKAGE_NAME sdblk)
  set(CPACK_DEBIAN_COMPANION_PACKAGE_SECTION science)
  set(CPACK_DEBIAN_COMPANION_DESCRIPTION
      "writes what SEED volumes hold as data
${volume_text}
This command reads volumes to their last byte, damaged ones too, and writes
their fields, channels, responses and stretches of data as JSON Lines,
comma-separated values or StationXML, from one file or from millions."
  )
endif()

if(TARGET sdblk_python)
  list(APPEND CPACK_COMPONENTS_ALL python)
  # The module is for this version of the interpreter.
  set(python_here "${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}")
  math(EXPR python_next "${Python_VERSION_MINOR} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-sdblk)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
      "python3 (>= ${python_here}~), python3 (<< ${Python_VERSION_MAJOR}.${python_next}), python3-numpy"
  )
  set(CPACK_DEBIAN_PYTHON_DESCRIPTION
      "library that reads SEED volumes, for Python
${volume_text}
This package gives what volumes hold as objects and numpy tables, and channels,
responses and stretches of data as dicts."
  )
endif()

set(library_package "libsdblk${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libsdblk-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_DESCRIPTION
    "library that reads SEED volumes, development files
${volume_text}
This package has what programs that read volumes block by block are compiled
with: headers, libraries, their descriptions for CMake and pkg-config, and the
manual page sdblk(3)."
)

if(TARGET sdblk_shared OR BUILD_SHARED_LIBS)
  list(APPEND CPACK_COMPONENTS_ALL library)
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME "${library_package}")
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_LIBRARY_DESCRIPTION
      "library that reads SEED volumes
${volume_text}
This package has the library that programs find when they run."
  )
  set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
      "${library_package} (= ${PROJECT_VERSION})"
  )
  # Tells the system to look for new libraries once all packages are unpacked.
  set(triggers "${PROJECT_BINARY_DIR}/debian/triggers")
  file(WRITE "${triggers}" "activate-noawait ldconfig\n")
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${triggers}")
endif()

include(CPack)
