// One resumable pass of the occlusion of the map's texels. Each fragment
// walks the element tree from where its previous pass stopped: far subtrees
// count as one disc, near leaves as their exact triangle, and a band round
// the switch distance blends a node with its children so that no step
// shows. A walk stops after `looplimit` steps, but only where it leaves a
// subtree, so that the next pass needs nothing but where to go on and the
// sum so far.
//
// State in and out: x active, yz the next element's coordinates (y 0: the
// walk is done), w 1 - the sum; a finished fragment has z 1.
OND_IN(vec3,position)
OND_IN(vec3,normal)
OND_IN(vec2,vuv0)
OND_SAMPLER(smpprevres)
OND_SAMPLER(smpwsnrm)
OND_SAMPLER(smpvert)
OND_SAMPLER(smppos)
OND_SAMPLER(smpnrm)
OND_SAMPLER(smpind)
OND_SAMPLER(smptri0)
OND_SAMPLER(smptri1)
OND_SAMPLER(smpocc)
uniform float epsi;
// The packed coordinates are texel centres: fetching the texel they name
// gives what nearest filtering would, without the filtering.
vec2 packsize;
#define PACKED(smp, c) texelFetch(smp, ivec2((c) * packsize), 0)
uniform float errbias;
uniform float distfade;
uniform float trifade;
uniform float zonerad;
uniform float usewsnrm;
uniform float looplimit;

const float PI = 3.14159265;

// Lambert's formula: the part of the hemisphere over (p, n) that the
// triangle covers, projected; 0 for a triangle seen from its back.
float formFactorTri(vec3 p, vec3 n, vec3 q0, vec3 q1, vec3 q2)
{
    vec3 r0 = normalize(q0 - p);
    vec3 r1 = normalize(q1 - p);
    vec3 r2 = normalize(q2 - p);
    vec3 g0 = normalize(cross(r1, r0));
    vec3 g1 = normalize(cross(r2, r1));
    vec3 g2 = normalize(cross(r0, r2));
    vec3 a = acos(clamp(vec3(dot(r0, r1), dot(r1, r2), dot(r2, r0)), -1.0, 1.0));
    vec3 d = clamp(vec3(dot(n, g0), dot(n, g1), dot(n, g2)), -1.0, 1.0);
    return max(0.0, dot(a, d) * 0.5 / PI);
}

float faded(vec3 p, vec3 n, vec3 q0, vec3 q1, vec3 q2)
{
    vec3 c = (q0 + q1 + q2) / 3.0 - p;
    return formFactorTri(p, n, q0, q1, q2) / (1.0 + distfade * dot(c, c));
}

// The triangle cut to the part above the tangent plane of (p, n).
float computeContrib(vec3 p, vec3 n, vec3 v0, vec3 v1, vec3 v2, float d2)
{
    vec3 sd = vec3(dot(n, v0), dot(n, v1), dot(n, v2)) - dot(n, p);
    bvec3 visible = greaterThan(sd, vec3(errbias));
    if (!any(visible))
        return 0.0;
    if (all(visible))
        return formFactorTri(p, n, v0, v1, v2) / (1.0 + distfade * d2);

    // Lowest corner first; a tie is exchanged too.
    float trirot = 0.0;
    float s = step(sd.y, sd.x);
    vec3 t = mix(v0, v1, s); v1 = mix(v1, v0, s); v0 = t;
    sd.xy = mix(sd.xy, sd.yx, s);
    trirot += s;
    s = step(sd.z, sd.y);
    t = mix(v1, v2, s); v2 = mix(v2, v1, s); v1 = t;
    sd.yz = mix(sd.yz, sd.zy, s);
    trirot += s;
    s = step(sd.y, sd.x);
    t = mix(v0, v1, s); v1 = mix(v1, v0, s); v0 = t;
    sd.xy = mix(sd.xy, sd.yx, s);
    trirot += s;
    bool flip = trirot == 1.0 || trirot == 3.0;

    float h0 = sd.x, h1 = sd.y, h2 = sd.z;
    if (h1 > errbias) {
        h0 -= errbias;
        vec3 a = v0 + (h0 / (h0 - h1)) * (v1 - v0);
        vec3 c = v0 + (h0 / (h0 - h2)) * (v2 - v0);
        vec3 b = v1;
        if (flip) {
            b = c;
            c = v1;
        }
        return faded(p, n, a, b, c) + faded(p, n, b, v2, c);
    }
    h2 += errbias;
    vec3 a = v0 + (h0 / (h0 - h2)) * (v2 - v0);
    vec3 b = v1 + (h1 / (h1 - h2)) * (v2 - v1);
    if (flip) {
        vec3 x = a;
        a = b;
        b = x;
    }
    return faded(p, n, a, b, v2);
}

void main()
{
    packsize = vec2(textureSize(smppos, 0));
    vec4 prevres = OND_SAMPLE(smpprevres, vec2(vuv0.x, 1.0 - vuv0.y));
    if (prevres.y == 0.0) {
        OND_FRAGCOLOR = prevres;
        return;
    }
    float result = prevres.x - prevres.w;
    vec4 seind = vec4(prevres.yz, 0.0, 0.0);
    float loopcount = 0.0;
    vec3 curpos = position;
    vec3 curnrmfrg = OND_SAMPLE(smpwsnrm, vuv0).xyz * 2.0 - 1.0;
    vec3 curnrm = normalize(normal);
    if (usewsnrm != 0.0) {
        curpos += 4.0 * errbias * curnrm;
        curnrm = normalize(curnrmfrg);
    }

    float upweight = 0.0;
    float uparea = 1.0;
    float upcontrib = 0.0;
    vec2 upnext = seind.xy;

    while (seind.x != 0.0) {
        vec2 curind = seind.xy;
        vec4 sepos = PACKED(smppos, curind);
        float searea = sepos.w;
        vec4 senrm = PACKED(smpnrm, curind);
        float seocc = PACKED(smpocc, curind).r;
        seind = PACKED(smpind, curind);

        vec3 v = sepos.xyz - curpos;
        float d2 = dot(v, v) + 1e-16;
        v /= sqrt(d2);
        float sefacing = dot(senrm.xyz, -v);
        float contrib = seocc * abs(searea) * clamp(sefacing, 0.0, 1.0) * clamp(dot(curnrm, v), 0.0, 1.0)
            / ((d2 * PI + abs(searea)) * (1.0 + distfade * d2));
        float fuzzdist = -epsi * searea;
        bool sevisible = dot(curnrm, curpos - sepos.xyz) < senrm.w;

        if (d2 < fuzzdist * (1.0 + zonerad) && sevisible) {
            upnext = seind.xy;
            seind.xy = seind.zw;
            upcontrib = contrib;
            uparea = searea;
            upweight = clamp((d2 - (1.0 - zonerad) * fuzzdist) / (2.0 * zonerad * fuzzdist), 0.0, 1.0);
        } else {
            if (searea > 0.0) {
                if (sefacing >= 0.0 && sevisible) {
                    vec4 t0 = PACKED(smptri0, curind);
                    vec2 t1 = PACKED(smptri1, curind).xy;
                    vec3 q0 = PACKED(smpvert, t0.xy).xyz;
                    vec3 q1 = PACKED(smpvert, t0.zw).xyz;
                    vec3 q2 = PACKED(smpvert, t1).xyz;
                    contrib = computeContrib(curpos, curnrm, q0, q1, q2, d2) * pow(seocc, trifade);
                } else {
                    contrib = 0.0;
                }
                loopcount += 4.0;
            }
            result += mix(contrib, upcontrib * abs(searea / uparea), upweight);
        }

        bool jumpup = all(equal(seind.xy, upnext));
        if (jumpup)
            upweight = 0.0;
        loopcount += 1.0;
        if (jumpup && loopcount > looplimit && seind.x != 0.0) {
            OND_FRAGCOLOR = vec4(1.0, seind.xy, max(1.0 - result, 0.0));
            return;
        }
    }
    OND_FRAGCOLOR = vec4(0.0, 0.0, 1.0, max(1.0 - result, 0.0));
}
