# qp_add_test(NAME LIBS lib... [DISPLAY] [DEVICE] [CLIPS])
# One QtTest program from NAME.cpp, linked to the folders' libraries.
#   DISPLAY  it opens windows or draws: never beside another one on the same display (focus is global)
#   DEVICE   it writes the device's files below DEVICE_ROOT; left out of builds without a root
#   CLIPS    it plays clips: they have to be made first
# The macros CLIP_DIR and QP_LIMIT_MS are the clips' folder and the limit of any wait.
set(QP_REPORTS
    "QObject::connect:|QObject::disconnect:|-CRITICAL \\*\\*|-WARNING \\*\\*|AddressSanitizer|LeakSanitizer|ThreadSanitizer:|runtime error:")

function(qp_test_properties name)
  cmake_parse_arguments(ARG "DISPLAY;DEVICE" "" "" ${ARGN})
  set_tests_properties(${name} PROPERTIES
    FAIL_REGULAR_EXPRESSION "${QP_REPORTS}"
    ENVIRONMENT "${QP_TEST_ENVIRONMENT}")
  if(ARG_DISPLAY)
    set_property(TEST ${name} APPEND PROPERTY RESOURCE_LOCK display)
    set_property(TEST ${name} PROPERTY COST 100) # first: they take turns, the others fill the gaps
    set_property(TEST ${name} APPEND PROPERTY LABELS display)
  endif()
  if(ARG_DEVICE)
    set_property(TEST ${name} APPEND PROPERTY RESOURCE_LOCK device)
  endif()
endfunction()

function(qp_add_test name)
  cmake_parse_arguments(ARG "DISPLAY;DEVICE;CLIPS" "" "LIBS" ${ARGN})
  if(ARG_DEVICE AND NOT DEVICE_ROOT)
    message(STATUS "${name} is left out: it needs a DEVICE_ROOT to write to")
    return()
  endif()
  add_executable(${name} ${name}.cpp)
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} Qt5::Test)
  target_compile_definitions(${name} PRIVATE
    QP_LIMIT_MS=${QP_LIMIT_MS} CLIP_DIR="${QP_CLIP_DIR}")
  if(CMAKE_CROSSCOMPILING)
    target_link_libraries(${name} PRIVATE emulated_process)
    if(ARG_DISPLAY)
      set_property(TARGET ${name} PROPERTY CROSSCOMPILING_EMULATOR
        ${PROJECT_SOURCE_DIR}/tests/with-renderer.sh ${CMAKE_CROSSCOMPILING_EMULATOR})
    endif()
  endif()
  if(ARG_CLIPS)
    add_dependencies(${name} clips)
  endif()
  add_test(NAME ${name} COMMAND ${name})
  set(flags)
  if(ARG_DISPLAY)
    list(APPEND flags DISPLAY)
  endif()
  if(ARG_DEVICE)
    list(APPEND flags DEVICE)
  endif()
  qp_test_properties(${name} ${flags})
  if(ARG_CLIPS)
    set_property(TEST ${name} APPEND PROPERTY LABELS clips)
  endif()
endfunction()

# qp_test_starts(NAME MACRO TARGET): the test starts TARGET as a process of its own; the macro is its
# path. An emulated test cannot start an emulated program directly: a script stands between them.
function(qp_test_starts name macro target)
  set(path $<TARGET_FILE:${target}>)
  if(CMAKE_CROSSCOMPILING)
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    set(script ${CMAKE_BINARY_DIR}/emulated/${name}-${target})
    file(GENERATE OUTPUT ${script} CONTENT "#!/bin/sh\nexec ${emulator} ${path} \"$@\"\n"
      FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    set(path ${script})
    target_link_libraries(${target} PRIVATE emulated_process)
  endif()
  add_dependencies(${name} ${target})
  target_compile_definitions(${name} PRIVATE ${macro}="${path}")
endfunction()

# Emulated, a program cannot be traced, which the leak check needs, and file status is not looked up
# in the sysroot, which the search for plugins needs. with-renderer.sh says what draws.
set(QP_LEAK_CHECK 1)
set(QP_LIMIT_MS 20000) # for any wait in a test
set(QP_EMULATOR_ENVIRONMENT)
if(CMAKE_CROSSCOMPILING)
  add_library(emulated_process OBJECT EmulatedProcess.cpp)
  set(QP_LEAK_CHECK 0)
  set(QP_EMULATOR_ENVIRONMENT
      "GST_PLUGIN_SYSTEM_PATH_1_0=${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/gstreamer-1.0"
      "GST_REGISTRY_FORK=no"
      "GALLIUM_DRIVER=virpipe")
endif()

set(QP_TEST_ENVIRONMENT
    "UBSAN_OPTIONS=print_stacktrace=1"
    "ASAN_OPTIONS=detect_leaks=${QP_LEAK_CHECK}"
    "LSAN_OPTIONS=suppressions=${CMAKE_CURRENT_SOURCE_DIR}/sanitizers/lsan.supp:print_suppressions=0"
    "TSAN_OPTIONS=history_size=7:second_deadlock_stack=1"
    "G_SLICE=always-malloc" # GLib's own allocator hides leaks and who freed what
    "XDG_RUNTIME_DIR=${CMAKE_BINARY_DIR}/run"
    "GST_REGISTRY=${CMAKE_BINARY_DIR}/run/gst-registry.bin"
    "QT_STYLE_OVERRIDE="
    "LC_ALL=C.UTF-8"
    ${QP_EMULATOR_ENVIRONMENT})
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/run)
file(CHMOD ${CMAKE_BINARY_DIR}/run PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
