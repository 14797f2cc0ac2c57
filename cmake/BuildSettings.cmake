# Settings that every target shares: the language, the warnings, the sanitizers.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Includes are written from the top of the tree: #include "player/CPlayer.h".
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
  # What a sanitizer must be told of other libraries, in every program.
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

# Every library reports to the fuzzer which of its branches an input reached.
if(QP_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
