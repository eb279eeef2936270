# Run by cpack before it packs: gives each Debian package its copyright file and changelog, packs the
# documents and strips the binaries as Debian wants them.  The date is that of SOURCE_DATE_EPOCH where
# it is set.

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)

# The licence is the source tree's; where there is none, the package says so.
set(copyright "These files were made from the source tree of tarvik ${CPACK_PACKAGE_VERSION}
by ${CPACK_PACKAGE_CONTACT}.
")
if(EXISTS "${CPACK_TARVIK_SOURCE_DIR}/LICENSE")
  file(READ "${CPACK_TARVIK_SOURCE_DIR}/LICENSE" licence)
  string(APPEND copyright "\n${licence}")
else()
  string(APPEND copyright "
The source tree states neither an owner nor a licence.  Ask the maker of this
package before you pass it on.
")
endif()

# Documents of a package whose files lie below root.
function(add_documents package root)
  set(folder "${root}/share/doc/${package}")
  file(WRITE "${folder}/copyright" "${copyright}")
  file(WRITE "${folder}/changelog"
       "${package} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Package of release ${CPACK_PACKAGE_VERSION}.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
"
  )
  file(GLOB pages "${root}/share/man/man*/*.[1-9]")
  execute_process(COMMAND gzip -9 -n "${folder}/changelog" ${pages} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(strip_files options)
  if(ARGN)
    execute_process(
      COMMAND "${CPACK_TARVIK_STRIP}" ${options} --remove-section=.comment ${ARGN}
      COMMAND_ERROR_IS_FATAL ANY
    )
  endif()
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" upper)
  set(root "${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX}")
  add_documents("${CPACK_DEBIAN_${upper}_PACKAGE_NAME}" "${root}")
  file(GLOB binaries "${root}/bin/*" "${root}/lib/*/lib*.so.*.*"
       "${root}/lib/python3/dist-packages/*/*.so"
  )
  strip_files(--strip-unneeded ${binaries})
  file(GLOB archives "${root}/lib/*/lib*.a")
  strip_files("--strip-debug;--enable-deterministic-archives" ${archives})
endforeach()
