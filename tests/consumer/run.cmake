# Installs what a build has made, and uses it as other projects would: found by CMake and by
# pkg-config, from C and from C++.  Fails at the first step that fails.
#
#   BUILD_DIR   the build                SOURCE_DIR  the project's root
#   WORK_DIR    a directory for this     GENERATOR   CMake's
#   CC, CXX     the compilers            CONFIG      the build's configuration
#   PKG_CONFIG  pkg-config, or empty

cmake_minimum_required(VERSION 3.25)

function(must what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE text ERROR_VARIABLE text)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${what} failed (${result}):\n${text}")
  endif()
endfunction()

function(build_project source binary)
  must("Configuring ${source}" ${CMAKE_COMMAND} -S "${source}" -B "${binary}" -G "${GENERATOR}"
       "-DCMAKE_PREFIX_PATH=${stage}" "-DCMAKE_C_COMPILER=${CC}" "-DCMAKE_CXX_COMPILER=${CXX}"
       "-DCMAKE_BUILD_TYPE=${CONFIG}"
  )
  must("Building ${source}" ${CMAKE_COMMAND} --build "${binary}")
endfunction()

# Moved after it was installed, which an installed copy must stand.
set(stage "${WORK_DIR}/moved")
file(REMOVE_RECURSE "${WORK_DIR}")
must("Installing" ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${WORK_DIR}/installed")
file(RENAME "${WORK_DIR}/installed" "${stage}")

# Every header compiles alone, from the installed files only.
set(include_dir "${stage}/include/tarvik")
file(GLOB_RECURSE headers RELATIVE "${include_dir}" "${include_dir}/*.h" "${include_dir}/*.hpp")
set(cxx_headers seed/getv.h seed/sdblk.hpp)
foreach(header IN ITEMS seed/sdblk.h seed/whole.h ${cxx_headers})
  if(NOT header IN_LIST headers)
    message(FATAL_ERROR "The public header ${header} is not installed, only ${headers}.")
  endif()
endforeach()
foreach(header IN LISTS headers)
  file(WRITE "${WORK_DIR}/alone.cpp" "#include \"${header}\"\n")
  must("C++17: ${header}" "${CXX}" -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only
       "-I${include_dir}" "${WORK_DIR}/alone.cpp"
  )
  if(header IN_LIST cxx_headers)
    continue()
  endif()
  file(WRITE "${WORK_DIR}/alone.c" "#include \"${header}\"\nextern int not_empty;\n")
  must("C11: ${header}" "${CC}" -std=c11 -Wall -Wextra -Wpedantic -Werror -fsyntax-only
       "-I${include_dir}" "${WORK_DIR}/alone.c"
  )
endforeach()

# A program's own support/api.h, which comes first on its path, hides none of them.
file(WRITE "${WORK_DIR}/own/support/api.h" "#define SUPPORT_API_H_\n")
must("A header of the program's own" "${CC}" -std=c11 -Wall -Wextra -Wpedantic -Werror -fsyntax-only
     "-I${WORK_DIR}/own" "-I${include_dir}" -include support/api.h
     "${SOURCE_DIR}/tests/consumer/consumer.c"
)

foreach(page IN ITEMS man/man1/tarvik.1 man/man3/sdblk.3 doc/tarvik/listing.md doc/tarvik/format.md)
  if(NOT EXISTS "${stage}/share/${page}")
    message(FATAL_ERROR "The page ${page} is not installed.")
  endif()
endforeach()

must("The installed command" "${stage}/bin/tarvik" "${SOURCE_DIR}/samples/demo.seed")
if(EXISTS "${stage}/bin/sdblk")
  must("The installed companion" "${stage}/bin/sdblk" volumes "${SOURCE_DIR}/samples/demo.seed")
endif()

build_project("${SOURCE_DIR}/tests/consumer" "${WORK_DIR}/consumer")
must("The consumer" "${WORK_DIR}/consumer/consumer")
if(EXISTS "${WORK_DIR}/consumer/consumer_shared")
  must("The consumer of the shared library" "${WORK_DIR}/consumer/consumer_shared")
endif()
foreach(standard IN ITEMS 17 20)
  must("The consumer in C++${standard}" "${WORK_DIR}/consumer/consumer_cxx${standard}")
endforeach()

# Once more without C++, whose runtime the static library needs nevertheless.
file(COPY "${SOURCE_DIR}/tests/consumer/consumer.c" DESTINATION "${WORK_DIR}/plain")
file(READ "${SOURCE_DIR}/tests/consumer/CMakeLists.txt" project)
string(REPLACE "LANGUAGES C CXX" "LANGUAGES C" project "${project}")
file(WRITE "${WORK_DIR}/plain/CMakeLists.txt" "${project}")
build_project("${WORK_DIR}/plain" "${WORK_DIR}/plain/build")
must("The consumer without C++" "${WORK_DIR}/plain/build/consumer")

build_project("${stage}/share/doc/tarvik/examples" "${WORK_DIR}/examples")
foreach(program IN ITEMS stations channels inspect)
  must("The example ${program}" "${WORK_DIR}/examples/${program}" "${SOURCE_DIR}/samples/demo.seed")
endforeach()

if(PKG_CONFIG)
  file(GLOB_RECURSE pc "${stage}/sdblk.pc")
  cmake_path(GET pc PARENT_PATH pc_dir)
  cmake_path(GET pc_dir PARENT_PATH lib_dir)
  set(ENV{PKG_CONFIG_PATH} "${pc_dir}")
  execute_process(COMMAND "${PKG_CONFIG}" --cflags --libs sdblk OUTPUT_VARIABLE options
                  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY
  )
  separate_arguments(options UNIX_COMMAND "${options}")
  must("Compiling with pkg-config" "${CC}" "${SOURCE_DIR}/tests/consumer/consumer.c" -o
       "${WORK_DIR}/consumer_pc" ${options}
  )
  must("The consumer by pkg-config" ${CMAKE_COMMAND} -E env "LD_LIBRARY_PATH=${lib_dir}"
       "${WORK_DIR}/consumer_pc"
  )
endif()
