# Small clips for the tests, made once at build time by make-clips.sh.
set(QP_CLIP_DIR ${CMAKE_BINARY_DIR}/clips)
add_custom_command(
  OUTPUT ${QP_CLIP_DIR}/.made
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/make-clips.sh ${QP_CLIP_DIR}
  DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/make-clips.sh
  COMMENT "Making the test clips")
add_custom_target(clips DEPENDS ${QP_CLIP_DIR}/.made)
