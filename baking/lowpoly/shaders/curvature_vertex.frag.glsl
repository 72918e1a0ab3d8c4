// Curvature of one normal group: least-squares fit of Euler's formula to the
// normal curvatures towards its neighbours, the largest of them as first
// axis. Only the concave part of the smaller and the convex part of the
// larger principal curvature are kept.
OND_IN(vec2,texCoord)
OND_SAMPLER(smpposnrm)
OND_SAMPLER(smpconn)
uniform float invh0;
uniform float invw;
uniform float invh1;
uniform float curvmult;

vec2 packedUv(float key, float invh)
{
    return vec2(fract(key), (floor(key) + 0.5) * invh);
}

// Towards the group's i-th neighbour: the offset `d` to it and the normal
// curvature along it.
float neighbour(float first, int i, vec3 p, vec3 n, out vec3 d)
{
    float key = OND_SAMPLELOD(smpconn, packedUv(first + float(i) * invw, invh1), 0.0).r;
    vec2 uvn = packedUv(key, invh0);
    vec3 pi = OND_SAMPLELOD(smpposnrm, uvn, 0.0).xyz;
    vec3 ni = OND_SAMPLELOD(smpposnrm, uvn + vec2(invw * 0.5, 0.0), 0.0).xyz;
    d = pi - p;
    return -dot(d, ni - n) / dot(d, d);
}

void main()
{
    vec4 pos = OND_SAMPLELOD(smpposnrm, vec2(texCoord.x - invw * 0.25, texCoord.y), 0.0);
    vec4 nrm = OND_SAMPLELOD(smpposnrm, vec2(texCoord.x + invw * 0.25, texCoord.y), 0.0);
    int nbconn = int(nrm.w + 0.25);
    vec3 p = pos.xyz;
    vec3 n = nrm.xyz;

    float km = -10000.0;
    vec3 tm = vec3(0.0);
    for (int i = 0; i < nbconn; ++i) {
        vec3 d;
        float k = neighbour(pos.w, i, p, n, d);
        if (k > km) {
            km = k;
            tm = normalize(d - n * dot(d, n));
        }
    }

    float a11 = 0.0, a12 = 0.0, a22 = 0.0, a13 = 0.0, a23 = 0.0;
    for (int i = 0; i < nbconn; ++i) {
        vec3 d;
        float k = neighbour(pos.w, i, p, n, d);
        vec3 t = normalize(d - n * dot(d, n));
        float c = dot(tm, t);
        float s = length(cross(t, tm));
        float t0 = k - km * c * c;
        a11 += c * c * s * s;
        a12 += c * s * s * s;
        a22 += s * s * s * s;
        a13 += t0 * c * s;
        a23 += t0 * s * s;
    }

    float det = a11 * a22 - a12 * a12;
    float res = km;
    if (det >= 1e-4) {
        float b = (a13 * a22 - a23 * a12) / det;
        float cc = (a11 * a23 - a12 * a13) / det;
        float kg = km * cc - b * b * 0.25;
        float h = (km + cc) * 0.5;
        float h2kg = sqrt(max(h * h - kg, 0.0));
        res = min(0.0, h - h2kg) + max(0.0, h + h2kg);
    }
    OND_FRAGCOLOR = vec4(-res * curvmult + 0.5);
}
