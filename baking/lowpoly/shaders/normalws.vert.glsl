// World-space normal, tangent and binormal of the low mesh, drawn in UV space.
OND_IN(vec2,in_uv0)
OND_IN(vec3,in_normal)
OND_IN(vec4,in_bitangent)
OND_IN(vec4,in_tangent)
uniform vec4 uvWindow;
uniform vec4 normalWindow;
uniform mat3 normalMatrix;
OND_OUT(vec2,uv0)
OND_OUT(vec3,normal)
OND_OUT(vec3,bitangent)
OND_OUT(vec3,tangent)
void main()
{
    gl_Position = vec4((in_uv0 - uvWindow.xy) * uvWindow.zw, 0.0, 1.0);
    uv0 = (in_uv0 - normalWindow.xy) * normalWindow.zw;
    normal = normalize(normalMatrix * in_normal);
    bitangent = normalize(normalMatrix * in_bitangent.xyz);
    tangent = normalize(normalMatrix * in_tangent.xyz);
}
