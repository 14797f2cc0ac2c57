precision mediump float;
varying vec2 v_tex;
uniform sampler2D stexMenu;
uniform int uBlend;
const vec3 cBlack = vec3(0.0, 0.0, 0.0);

void main()
{
    vec4 cc = texture2D(stexMenu, v_tex);
    if(uBlend == 0 || cc.rgb != cBlack) {
        gl_FragColor = cc;
    } else {
        discard;
    }
}
