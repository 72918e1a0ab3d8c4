// The low mesh in the unit frame, drawn into the walk state of a tile with
// the rows mirrored: the state's first row is the top of the tile.
OND_IN(vec3,in_position)
OND_IN(vec3,in_normal)
OND_IN(vec2,in_uv0)
uniform vec4 uvWindow;
OND_OUT(vec3,position)
OND_OUT(vec3,normal)
OND_OUT(vec2,vuv0)
void main()
{
    vec2 uv1 = (in_uv0 - uvWindow.xy) * uvWindow.zw;
    uv1 = vec2(uv1.x, 1.0 - uv1.y);
    gl_Position = vec4(uv1 * 2.0 - 1.0, 0.5, 1.0);
    position = in_position;
    normal = in_normal;
    vuv0 = vec2(uv1.x, 1.0 - uv1.y);
}
