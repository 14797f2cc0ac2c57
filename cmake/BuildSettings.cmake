# Settings of every target: language, warnings, sanitizers.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Includes begin at the top of the tree: #include "player/CPlayer.h".
include_directories(${PROJECT_SOURCE_DIR})

add_compile_options(-Wall -Wextra -Wpedantic)
if(QP_WCONVERSION)
  add_compile_options(-Wconversion)
endif()
if(QP_WERROR)
  add_compile_options(-Werror)
endif()

if(QP_SANITIZE)
  add_compile_options(-fsanitize=${QP_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QP_SANITIZE})
  # Every program tells the sanitizer which reports of other libraries to leave out.
  if(QP_SANITIZE MATCHES "address")
    set(CMAKE_ENABLE_EXPORTS ON)
    add_library(leak_checker OBJECT tests/sanitizers/LeakChecker.cpp)
    link_libraries($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:$<TARGET_OBJECTS:leak_checker>>)
  elseif(QP_SANITIZE MATCHES "thread")
    set(CMAKE_ENABLE_EXPORTS ON)
    add_library(race_checker OBJECT tests/sanitizers/RaceChecker.cpp)
    link_libraries($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:$<TARGET_OBJECTS:race_checker>>)
  endif()
endif()

if(QP_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

# The fuzzer needs to know which branches of every library an input reaches.
if(QP_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
