# Three things, each of which fails the test:
# - a kit header that the plug-in includes is not on docs/porting.md, or one that is there is not
#   included any more, or a header of another folder of this repository is included;
# - the plug-in does not compile when it finds only the headers of that page, and in them none of the
#   names in KitOnlyNames.h;
# - the check itself lets such a header or name pass.
#
# SOURCE_DIR, WORK_DIR, COMPILER and FLAGS (a list) are given.
cmake_minimum_required(VERSION 3.25)

set(plugin_folders Common model storage scheduler)
set(header "(BaseSDK|AgentSDK|AgentInterfacesV3)/[A-Za-z0-9_]+\\.h")

# The page and the sources agree.
file(READ "${SOURCE_DIR}/docs/porting.md" page)
string(REGEX MATCHALL "${header}" told "${page}")
list(REMOVE_DUPLICATES told)
list(TRANSFORM plugin_folders PREPEND "${SOURCE_DIR}/" OUTPUT_VARIABLE globs)
list(TRANSFORM globs APPEND "/*.[ch]*")
file(GLOB plugin_files ${globs})
foreach(file IN LISTS plugin_files)
  file(STRINGS "${file}" lines REGEX "#include <${header}>")
  foreach(line IN LISTS lines)
    string(REGEX MATCH "${header}" name "${line}")
    list(APPEND used "${name}")
    if(NOT name IN_LIST told)
      message(SEND_ERROR "${file} includes ${name}, and docs/porting.md does not tell of it")
    endif()
  endforeach()
endforeach()
foreach(file IN LISTS plugin_files)
  file(STRINGS "${file}" lines REGEX "#include \"")
  foreach(line IN LISTS lines)
    if(NOT line MATCHES "#include \"(Common|model|storage|scheduler)/")
      message(SEND_ERROR "${file} includes what is not the plug-in's: ${line}")
    endif()
  endforeach()
endforeach()
foreach(name IN LISTS told)
  if(NOT name IN_LIST used)
    message(SEND_ERROR "docs/porting.md tells of ${name}, and the plug-in does not include it")
  endif()
endforeach()

# The kit's headers: those of the page where the plug-in looks for them, the others out of the way.
file(REMOVE_RECURSE "${WORK_DIR}/host")
set(prelude "")
foreach(box IN ITEMS base agent interfaces)
  file(GLOB_RECURSE files RELATIVE "${SOURCE_DIR}/sdk/${box}/include"
    "${SOURCE_DIR}/sdk/${box}/include/*.h")
  list(APPEND kit_headers ${files})
  list(APPEND kit_folders "${SOURCE_DIR}/sdk/${box}/include")
endforeach()
foreach(name IN LISTS kit_headers)
  find_file(path "${name}" PATHS ${kit_folders} NO_DEFAULT_PATH NO_CACHE REQUIRED)
  file(READ "${path}" text)
  unset(path)
  foreach(other IN LISTS kit_headers)
    if(NOT other IN_LIST told)
      string(REPLACE "<${other}>" "<KitOnly/${other}>" text "${text}")
    endif()
  endforeach()
  if(name IN_LIST told)
    file(WRITE "${WORK_DIR}/host/${name}" "${text}")
    string(APPEND prelude "#include <${name}>\n")
  else()
    file(WRITE "${WORK_DIR}/host/KitOnly/${name}" "${text}")
  endif()
endforeach()
file(WRITE "${WORK_DIR}/HostNames.h"
  "${prelude}#include \"${SOURCE_DIR}/tests/porting/KitOnlyNames.h\"\n")

# Looks a text over as a source of the plug-in; `errors` is what the compiler says when it fails.
function(compile name text errors)
  file(WRITE "${WORK_DIR}/${name}.cpp" "${text}")
  execute_process(
    COMMAND "${COMPILER}" ${FLAGS} -std=c++20 -fsyntax-only -D_FILE_OFFSET_BITS=64
      "-I${WORK_DIR}/host" "-I${SOURCE_DIR}" -include "${WORK_DIR}/HostNames.h"
      "${WORK_DIR}/${name}.cpp"
    RESULT_VARIABLE failed ERROR_VARIABLE said)
  set(${errors} "" PARENT_SCOPE)
  if(failed)
    set(${errors} "${said}${failed}" PARENT_SCOPE)
  endif()
endfunction()

set(sources ${plugin_files})
list(FILTER sources INCLUDE REGEX "\\.cpp$")
list(TRANSFORM sources REPLACE "(.+)" "#include \"\\1\"\n")
list(JOIN sources "" text)
compile(Plugin "${text}" errors)
if(NOT "${errors}" STREQUAL "")
  message(SEND_ERROR "the plug-in needs more than the host's names:\n${errors}")
endif()

# What must not pass does not.
compile(AKitHeader "#include <BaseSDK/ALong32.h>\n" errors)
if(NOT "${errors}" MATCHES "BaseSDK/ALong32\\.h")
  message(SEND_ERROR "a header of the kit's own passes:\n${errors}")
endif()
file(STRINGS "${SOURCE_DIR}/tests/porting/KitOnlyNames.h" names REGEX "^#pragma GCC poison ")
list(TRANSFORM names REPLACE "^#pragma GCC poison " "")
list(TRANSFORM names REPLACE "(.+)" "#ifdef \\1\n#endif\n" OUTPUT_VARIABLE lines)
list(JOIN lines "" text)
compile(KitNames "${text}" errors)
set(line -1)
foreach(name IN LISTS names)
  math(EXPR line "${line} + 2")
  if(NOT "${errors}" MATCHES "KitNames\\.cpp:${line}:[0-9]+: error: attempt to use (a )?poisoned")
    message(SEND_ERROR "${name} passes:\n${errors}")
  endif()
endforeach()
