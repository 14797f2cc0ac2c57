attribute vec3 a_pos;
attribute vec2 a_tex;
varying vec2 v_tex;
uniform int u_position;

void main()
{
    gl_Position = vec4(a_pos, 1.0);
    if (u_position == 0) {
        v_tex.x = a_tex.x * 0.25;
    } else if (u_position == 1) {
        v_tex.x = (a_tex.x + 1.0) * 0.25;
    } else if (u_position == 2) {
        v_tex.x = (a_tex.x + 2.0) * 0.25;
    } else if (u_position == 3) {
        v_tex.x = (a_tex.x + 3.0) * 0.25;
    }
    v_tex.y = a_tex.y;
}
