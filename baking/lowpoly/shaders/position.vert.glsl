// World position of the low mesh, drawn in UV space.
OND_IN(vec3,in_position)
OND_IN(vec2,in_uv0)
uniform vec4 uvWindow;
uniform mat4 model;
OND_OUT(vec3,position)
void main()
{
    position = (model * vec4(in_position, 1.0)).xyz;
    gl_Position = vec4(in_uv0 * uvWindow.zw - uvWindow.xy, 0.0, 1.0);
}
