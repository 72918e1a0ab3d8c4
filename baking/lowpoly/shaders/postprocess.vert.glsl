// One triangle that covers the viewport, corners from the vertex index so
// that no attribute is needed. `position` spans 0..1 over the viewport,
// `texCoord` the part of it given by `uv_size`.
OND_OUT(vec2,position)
OND_OUT(vec2,texCoord)
uniform vec2 uv_size;

void main()
{
    vec2 uv = vec2(gl_VertexID == 2 ? 2.0 : 0.0, gl_VertexID == 1 ? 2.0 : 0.0);
    position = uv;
    texCoord = uv * uv_size;
    gl_Position = vec4(2.0 * uv - 1.0, 0.0, 1.0);
}
