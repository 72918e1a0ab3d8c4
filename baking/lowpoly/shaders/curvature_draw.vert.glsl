// Curvature mesh in UV space: positions for the per-pixel pass. flipy -1
// puts the top of the tile in the first row read back.
OND_IN(vec3,in_position)
OND_IN(vec2,in_uv0)
uniform vec4 uvWindow;
uniform float flipy;
OND_OUT(vec3,position)
void main()
{
    vec2 uv1 = (in_uv0 - uvWindow.xy) * (uvWindow.zw * 2.0);
    gl_Position = vec4(uv1.x - 1.0, flipy * uv1.y - flipy, 0.5, 1.0);
    position = in_position;
}
