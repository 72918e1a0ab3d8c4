// Per-vertex curvature spread over the triangles: each vertex fetches the
// value of its normal group by its packed key.
OND_IN(float,in_position)
OND_IN(vec2,in_uv0)
uniform vec4 uvWindow;
uniform float flipy;
uniform float invh0;
uniform sampler2D smpcurv;
OND_OUT(vec3,position)
void main()
{
    vec2 uv1 = (in_uv0 - uvWindow.xy) * (uvWindow.zw * 2.0);
    gl_Position = vec4(uv1.x - 1.0, flipy * uv1.y - flipy, 0.5, 1.0);
    vec2 uv2 = vec2(fract(in_position), (floor(in_position) + 0.5) * invh0);
    position = vec3(OND_SAMPLELOD(smpcurv, uv2, 0.0).r);
}
