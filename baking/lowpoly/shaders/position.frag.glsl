OND_IN(vec3,position)
uniform vec3 normalization_coeff;
uniform vec3 normalization_offset;
uniform int channel;
uniform int monochrome;
void main()
{
    vec3 res = (position - normalization_offset) * normalization_coeff;
    if (monochrome != 0) {
        float v = channel == 0 ? res.x : (channel == 1 ? res.y : res.z);
        res = vec3(v);
    }
    OND_FRAGCOLOR = vec4(res, 1.0);
}
