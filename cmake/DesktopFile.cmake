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

# velto_desktop_file(id program): ID.desktop.in and ID.svg of the calling folder. The build folder gets a desktop
# file that starts the build's program, an installation one that finds it on PATH.
function(velto_desktop_file id program)
  set(started ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${program})
  velto_exec_word(word "${started}")
  set(VELTO_EXEC "/usr/bin/env ${word}")
  velto_desktop_value(VELTO_TRY "${started}")
  velto_desktop_value(VELTO_ICON "${CMAKE_CURRENT_SOURCE_DIR}/${id}.svg")
  configure_file(${id}.desktop.in ${CMAKE_BINARY_DIR}/share/applications/${id}.desktop @ONLY)
  set(VELTO_EXEC ${program})
  set(VELTO_TRY ${program})
  set(VELTO_ICON ${id})
  configure_file(${id}.desktop.in ${CMAKE_CURRENT_BINARY_DIR}/installed/${id}.desktop @ONLY)

  set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/installed/${id}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES ${id}.svg DESTINATION ${icons}/scalable/apps)
  install(FILES ${id}-symbolic.svg DESTINATION ${icons}/symbolic/apps)
endfunction()
