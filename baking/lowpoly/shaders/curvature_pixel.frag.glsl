// Curvature of one texel from its eight neighbours in the position and
// world-space normal maps: the per-vertex fit in closed form for four fixed
// directions, each sampled on both sides.
OND_IN(vec2,texCoord)
OND_SAMPLER(smppos)
OND_SAMPLER(smpnrm)
uniform float invw;
uniform float invh;
uniform float curvmult;
uniform float posmult;

vec3 p;
vec3 n;
float km;
vec4 kmsel;

float computeCurv(vec4 ksel)
{
    vec2 uv1 = texCoord + vec2(invw, invh) * (ksel.yx + ksel.zy + vec2(ksel.w, -ksel.w));
    vec4 ps = OND_SAMPLE(smppos, uv1);
    float k = 0.0;
    if (ps.w != 0.0) {
        vec3 d = ps.xyz * posmult - p;
        vec3 ni = normalize(OND_SAMPLE(smpnrm, uv1).xyz * 2.0 - 1.0);
        float dd = dot(d, d);
        k = dd > 0.0 ? -dot(d, ni - n) / dd : 0.0;
    }
    if (k > km)
        kmsel = ksel;
    km = max(k, km);
    return k;
}

void main()
{
    n = normalize(OND_SAMPLE(smpnrm, texCoord).xyz * 2.0 - 1.0);
    p = OND_SAMPLE(smppos, texCoord).xyz * posmult;
    km = -10000.0;
    kmsel = vec4(0.0);
    vec3 s = vec3(0.0, 1.0, -1.0);
    vec4 k;
    k.x = computeCurv(s.zxxx) + computeCurv(s.yxxx);
    k.y = computeCurv(s.xzxx) + computeCurv(s.xyxx);
    k.z = computeCurv(s.xxzx) + computeCurv(s.xxyx);
    k.w = computeCurv(s.xxxz) + computeCurv(s.xxxy);

    kmsel = abs(kmsel);
    float b = 0.25 * dot(k, kmsel.wxyz - kmsel.yzwx);
    float c = (1.0 / 6.0) * (dot(k, kmsel.yxyx + kmsel.zwzw) + 2.0 * (dot(k, kmsel.zwxy) - km));
    float kg = km * c - 0.25 * b * b;
    float h = 0.5 * (km + c);
    float h2kg = sqrt(max(h * h - kg, 0.0));
    float k1 = min(0.0, h - h2kg);
    float k2 = max(0.0, h + h2kg);
    float v = -(k1 + k2) * curvmult + 0.5;
    OND_FRAGCOLOR = vec4(v, v, v, 1.0);
}
