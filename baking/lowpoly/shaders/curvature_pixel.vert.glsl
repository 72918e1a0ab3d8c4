// Per-pixel curvature: the mesh in UV space, with the texel's place in the
// tile of the position and normal maps.
OND_IN(vec2,in_uv0)
uniform vec4 uvWindow;
uniform vec4 normalWindow;
uniform float flipy;
OND_OUT(vec2,texCoord)
void main()
{
    vec2 uv1 = (in_uv0 - uvWindow.xy) * (uvWindow.zw * 2.0);
    gl_Position = vec4(uv1.x - 1.0, flipy * uv1.y - flipy, 0.5, 1.0);
    texCoord = (in_uv0 - normalWindow.xy) * normalWindow.zw;
}
