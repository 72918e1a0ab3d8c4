// One triangle over the viewport from a constant corner array.
OND_OUT(vec2,uv)
const vec2 corners[3] = vec2[3](vec2(0.0, 0.0), vec2(2.0, 0.0), vec2(0.0, 2.0));
void main()
{
    uv = corners[gl_VertexID];
    gl_Position = vec4(2.0 * uv - 1.0, 0.0, 1.0);
}
