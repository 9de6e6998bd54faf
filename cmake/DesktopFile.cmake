# Texts for the values of desktop files.

# velto_desktop_value(variable text): a value of a key.
function(velto_desktop_value variable text)
  string(REPLACE "\\" "\\\\" text "${text}")
  set(${variable} "${text}" PARENT_SCOPE)
endfunction()

# velto_exec_word(variable text): one word of a command in the key Exec, quoted for the command and again for the
# value. Not the first word: desktops look for the program that it names before they resolve "%%".
function(velto_exec_word variable text)
  string(REPLACE "\\" "\\\\" text "${text}")
  foreach(character "\"" "`" "$")
    string(REPLACE "${character}" "\\${character}" text "${text}")
  endforeach()
  string(REPLACE "%" "%%" text "${text}")
  velto_desktop_value(text "\"${text}\"")
  set(${variable} "${text}" PARENT_SCOPE)
endfunction()
