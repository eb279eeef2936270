# Fails when a file includes another one of a layer above its own: cmd -> seed -> support,
# and sdblk, python -> views -> seed.
#
#   ROOT  the project's root

cmake_minimum_required(VERSION 3.25)

set(may_include_support support)
set(may_include_seed seed support)
set(may_include_cmd cmd seed support)
set(may_include_views views seed support)
set(may_include_sdblk sdblk views seed support)
set(may_include_python python views seed support)
set(may_include_examples seed support)
set(layers support seed cmd views sdblk python tests bench samples fuzz examples)

# Headers made by the build, and the one folder whose files see no more of seed than its public part.
set(generated build_id.h build_contact.h)
set(blkdefs_may_include seed/sdblk.h seed/conversion.h seed/facts.h seed/format.h seed/line_format.h)

set(faults "")
foreach(layer IN ITEMS support seed cmd views sdblk python examples)
  file(GLOB_RECURSE files RELATIVE "${ROOT}" "${ROOT}/${layer}/*.cpp" "${ROOT}/${layer}/*.h"
       "${ROOT}/${layer}/*.c"
  )
  foreach(file IN LISTS files)
    file(STRINGS "${ROOT}/${file}" lines REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
    foreach(line IN LISTS lines)
      # Installed headers find each other beside themselves, whatever a program has on its path.
      string(REGEX REPLACE "^[^\"]*\"([.][.]/)?([^\"]*)\".*$" "\\2" header "${line}")
      string(REGEX REPLACE "/.*$" "" target "${header}")
      if(header IN_LIST generated)
        continue()
      elseif(NOT target IN_LIST layers OR NOT EXISTS "${ROOT}/${header}")
        list(APPEND faults "${file}: \"${header}\" is no path from the project's root")
      elseif(NOT target IN_LIST may_include_${layer})
        list(APPEND faults "${file}: ${layer} must not include \"${header}\"")
      elseif(file MATCHES "^seed/blkdefs/"
             AND NOT header MATCHES "^(seed/blkdefs|support)/"
             AND NOT header IN_LIST blkdefs_may_include
      )
        list(APPEND faults "${file}: the catalogue must not include \"${header}\"")
      endif()
    endforeach()
  endforeach()
endforeach()

if(faults)
  list(JOIN faults "\n  " faults)
  message(FATAL_ERROR "Includes that point the wrong way:\n  ${faults}")
endif()
