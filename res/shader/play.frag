precision mediump float;
varying vec2 v_tex;
uniform sampler2D u_tex0;
uniform bool b_video;
const vec4 cGreyColorV4 = vec4(0.07,0.07,0.11,1.0);

void main()
{
    if (b_video)
        gl_FragColor = texture2D(u_tex0, v_tex);
    else
        gl_FragColor = cGreyColorV4;
}
