OND_IN(float,transformedZPosition)
void main()
{
    float v = transformedZPosition;
    OND_FRAGCOLOR = vec4(v, v, v, 1.0);
}
