# qp_add_test(FOLDER/NAME LIBS lib... [DISPLAY] [DEVICE] [CLIPS] [STARTS (MACRO TARGET)...])
# One QtTest program from FOLDER/NAME.cpp, linked to the folders' libraries.
#   DISPLAY  it opens windows or draws: never beside another one on the same display (focus is global)
#   DEVICE   it writes the device's files below DEVICE_ROOT; left out of builds without a root
#   CLIPS    it plays clips: they have to be made first
#   STARTS   it starts TARGET as a process of its own; the macro is the path
# The macros CLIP_DIR and QP_LIMIT_MS are the clips' folder and the limit of any wait.
function(qp_add_test path)
  cmake_parse_arguments(ARG "DISPLAY;DEVICE;CLIPS" "" "LIBS;STARTS" ${ARGN})
  get_filename_component(name ${path} NAME)
  if(ARG_DEVICE AND NOT DEVICE_ROOT)
    message(STATUS "${name} is left out: it needs a DEVICE_ROOT to write to")
    return()
  endif()
  add_executable(${name} ${path}.cpp)
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
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES
    FAIL_REGULAR_EXPRESSION "${QP_REPORTS}"
    ENVIRONMENT "${QP_TEST_ENVIRONMENT}")
  if(ARG_DISPLAY)
    set_property(TEST ${name} APPEND PROPERTY RESOURCE_LOCK display)
    set_property(TEST ${name} PROPERTY COST 100) # first: they take turns, the others fill the gaps
  endif()
  if(ARG_DEVICE)
    set_property(TEST ${name} APPEND PROPERTY RESOURCE_LOCK device)
  endif()
  if(ARG_CLIPS)
    add_dependencies(${name} clips)
    set_property(TEST ${name} PROPERTY LABELS clips)
  endif()
  while(ARG_STARTS)
    list(POP_FRONT ARG_STARTS macro target)
    qp_test_starts(${name} ${macro} ${target})
  endwhile()
endfunction()

# An emulated test cannot start an emulated program directly: a script stands between them.
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

# Made once, at build time.
set(QP_CLIP_DIR ${CMAKE_BINARY_DIR}/clips)
add_custom_command(
  OUTPUT ${QP_CLIP_DIR}/.made
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/make-clips.sh ${QP_CLIP_DIR}
  DEPENDS make-clips.sh
  COMMENT "Making the test clips")
add_custom_target(clips DEPENDS ${QP_CLIP_DIR}/.made)

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

set(QP_REPORTS
    "QObject::connect:|QObject::disconnect:|-CRITICAL \\*\\*|-WARNING \\*\\*|AddressSanitizer|LeakSanitizer|ThreadSanitizer:|runtime error:")
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
