# A program's path with every character that a desktop file quotes, in a command and as the value of another key.
list(APPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR}/../../cmake)
include(DesktopFile)
set(path [[/a b/c"d`e$f\g%h;i]])
velto_exec_word(word "${path}")
velto_desktop_value(value "${path}")
if(NOT word STREQUAL [["/a b/c\\"d\\`e\\$f\\\\g%%h;i"]] OR NOT value STREQUAL [[/a b/c"d`e$f\\g%h;i]])
  message(FATAL_ERROR "${word} ${value}")
endif()
