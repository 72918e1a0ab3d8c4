// One fragment per normal group: a triangle over the whole result texture.
uniform vec4 uvWindow;
uniform float flipy;
OND_OUT(vec2,texCoord)
void main()
{
    vec2 uv = vec2(gl_VertexID == 2 ? 2.0 : 0.0, gl_VertexID == 1 ? 2.0 : 0.0);
    texCoord = uvWindow.xy + uv / uvWindow.zw;
    gl_Position = vec4(2.0 * uv.x - 1.0, flipy * (2.0 * uv.y - 1.0), 0.5, 1.0);
}
