# How every target of ours is built: warnings, Boost without header-only Asio, one precompiled header.
find_package(Threads REQUIRED)
find_package(OpenSSL REQUIRED)
find_package(Boost 1.81 REQUIRED COMPONENTS json)
find_package(PkgConfig REQUIRED)
pkg_check_modules(PULSE REQUIRED IMPORTED_TARGET libpulse)
pkg_check_modules(GIO REQUIRED gio-unix-2.0)
pkg_check_modules(CURL REQUIRED IMPORTED_TARGET libcurl)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)

add_library(velto_flags INTERFACE)
target_compile_options(velto_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # g++ 12 with -O2 reports its own std::string (GCC bugs 105329 and 105651).
  target_compile_options(velto_flags INTERFACE
    -Wno-restrict -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread)
endif()
target_include_directories(velto_flags INTERFACE ${PROJECT_SOURCE_DIR})

# Asio and Beast are compiled once; users see declarations only.
add_library(velto_boost STATIC ${PROJECT_SOURCE_DIR}/cmake/BoostImplementation.cpp)
target_compile_definitions(velto_boost PUBLIC
  BOOST_ASIO_SEPARATE_COMPILATION BOOST_ASIO_NO_DEPRECATED BOOST_BEAST_SEPARATE_COMPILATION
  # Blocks that Asio keeps per thread and purpose: as many as coroutines are nested on the way of a chunk.
  BOOST_ASIO_RECYCLING_ALLOCATOR_CACHE_SIZE=8)
target_link_libraries(velto_boost PUBLIC Boost::headers Boost::json OpenSSL::SSL Threads::Threads)

# One precompiled header for every target: coroutines and the standard containers are what costs.
add_library(velto_pch OBJECT ${PROJECT_SOURCE_DIR}/cmake/Precompiled.cpp)
target_link_libraries(velto_pch PRIVATE velto_flags velto_boost)
target_precompile_headers(velto_pch PRIVATE ${PROJECT_SOURCE_DIR}/cmake/Precompiled.h)

# What a sanitizer has to know about libraries that it cannot look into.
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=thread")
  add_library(velto_sanitizer OBJECT ${PROJECT_SOURCE_DIR}/cmake/ThreadSanitizer.cpp)
  function(velto_sanitized name)
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:velto_sanitizer>)
  endfunction()
else()
  function(velto_sanitized name)
  endfunction()
endif()

# velto_library(name SOURCES … [LINK …]): a static library of ours.
function(velto_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC velto_boost ${ARG_LINK} PRIVATE velto_flags)
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_precompile_headers(${name} REUSE_FROM velto_pch)
endfunction()

# velto_program(name SOURCES … [LINK …]): an executable of ours in <build>/bin.
function(velto_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  velto_sanitized(${name})
  target_link_libraries(${name} PRIVATE velto_flags velto_boost ${ARG_LINK})
  target_precompile_headers(${name} REUSE_FROM velto_pch)
endfunction()

# Where programs find each other and their files, below the build folder as below an installation's prefix
# (VeltoPlatform/linux/InstallTree.h).
set(VELTO_HELPERS ${CMAKE_INSTALL_LIBEXECDIR}/velto)
set(VELTO_RESOURCES ${CMAKE_INSTALL_DATADIR}/velto)

# velto_started_by_programs(name): an executable that is not for users' PATH.
function(velto_started_by_programs name)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/${VELTO_HELPERS})
endfunction()

# velto_resource(folder name): a folder of the sources that programs read, under that name.
function(velto_resource folder name)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/${VELTO_RESOURCES})
  file(CREATE_LINK ${folder} ${CMAKE_BINARY_DIR}/${VELTO_RESOURCES}/${name} SYMBOLIC)
  install(DIRECTORY ${folder}/ DESTINATION ${VELTO_RESOURCES}/${name})
endfunction()

# velto_test(name SOURCES … [LINK …] [VARIANTS …]): one GoogleTest program, one ctest entry; or one for each
# variant, with the tests whose names end with it.
function(velto_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;VARIANTS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  velto_sanitized(${name})
  target_link_libraries(${name} PRIVATE velto_flags velto_test_support ${ARG_LINK} GTest::gtest GTest::gtest_main)
  target_precompile_headers(${name} REUSE_FROM velto_pch)
  if(NOT ARG_VARIANTS)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 120)
  endif()
  foreach(variant ${ARG_VARIANTS})
    add_test(NAME ${name}_${variant} COMMAND ${name} "--gtest_filter=*/${variant}")
    set_tests_properties(${name}_${variant} PROPERTIES TIMEOUT 120)
  endforeach()
endfunction()
