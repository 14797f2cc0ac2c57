attribute vec3 a_pos;
attribute vec2 a_tex;
varying vec2 v_tex;
uniform int u_switch;

void main()
{
    gl_Position = vec4(a_pos, 1.0);
    if (u_switch == 1) {
        v_tex.x = a_tex.x * 0.5;
        v_tex.y = a_tex.y * 0.5;
    } else if (u_switch == 2) {
        v_tex.x = (a_tex.x + 1.0) * 0.5;
        v_tex.y = a_tex.y * 0.5;
    } else if (u_switch == 3) {
        v_tex.x = a_tex.x * 0.5;
        v_tex.y = (a_tex.y + 1.0) * 0.5;
    } else if (u_switch == 4) {
        v_tex.x = (a_tex.x + 1.0) * 0.5;
        v_tex.y = (a_tex.y + 1.0) * 0.5;
    } else {
        v_tex = a_tex;
    }
}
