// One triangle that covers the viewport, without attributes.
OND_OUT(vec2,uv)
void main()
{
    uv = vec2(gl_VertexID == 2 ? 2.0 : 0.0, gl_VertexID == 1 ? 2.0 : 0.0);
    gl_Position = vec4(2.0 * uv - 1.0, 0.0, 1.0);
}
