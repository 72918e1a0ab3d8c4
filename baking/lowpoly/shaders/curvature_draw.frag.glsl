OND_IN(vec3,position)
uniform float nrmzero;
void main()
{
    OND_FRAGCOLOR = vec4(position * (1.0 + nrmzero) - nrmzero, 1.0);
}
