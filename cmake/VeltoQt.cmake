# Targets with Qt in them. Qt asks its users for -fPIC, which programs of ours are otherwise not built with: so
# these have a precompiled header of their own.
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets Network DBus)

add_library(velto_qt INTERFACE)
target_link_libraries(velto_qt INTERFACE Qt6::Widgets Qt6::Network Qt6::DBus)
target_compile_definitions(velto_qt INTERFACE QT_NO_KEYWORDS)

add_library(velto_qt_pch OBJECT ${PROJECT_SOURCE_DIR}/cmake/Precompiled.cpp)
target_link_libraries(velto_qt_pch PRIVATE velto_flags velto_boost velto_qt)
target_precompile_headers(velto_qt_pch PRIVATE
  ${PROJECT_SOURCE_DIR}/cmake/Precompiled.h <QObject> <QString> <QWidget>)

# velto_qt(name): a target of ours, made before by one of the velto_… functions, may include Qt.
function(velto_qt name)
  target_link_libraries(${name} PRIVATE velto_qt)
  set_target_properties(${name} PROPERTIES AUTOMOC ON PRECOMPILE_HEADERS_REUSE_FROM velto_qt_pch)
endfunction()

# velto_qt_sanitized(name): a program that is started with a display and a session bus.
function(velto_qt_sanitized name)
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=thread")
    target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/ThreadSanitizerQt.cpp)
  endif()
endfunction()
