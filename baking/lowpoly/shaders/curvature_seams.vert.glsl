// Hard-edge lines: (u, v, l) per end, l the signed fold of the edge there.
OND_IN(vec3,in_position)
uniform vec4 uvWindow;
uniform float seamspow;
OND_OUT(float,transformedZPosition)
void main()
{
    vec2 uv1 = (in_position.xy - uvWindow.xy) * (uvWindow.zw * 2.0);
    gl_Position = vec4(uv1.x - 1.0, 1.0 - uv1.y, 0.5, 1.0);
    float l = in_position.z;
    float l1 = (0.5 / 3.14159265) * acos(clamp(1.0 - abs(l), -1.0, 1.0));
    transformedZPosition = 0.5 + sign(l) * pow(l1, seamspow);
}
