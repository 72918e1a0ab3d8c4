#pragma once
/*
 * The binary interface between zmfbaker and a tangent-space plugin.
 *
 * A plugin is a shared library exporting five C functions:
 *
 *   int          generateTangentSpace(const TangentSpaceContext* context, float angularThreshold);
 *   unsigned int getAPIVersion(void);                 -- must return TANGENT_SPACE_API_VERSION
 *   const char*  getLabel(void);                      -- UTF-8, may be null
 *   const char*  getDescription(void);                -- UTF-8, may be null
 *   const char*  getTangentBasisInterpolation(void);  -- UTF-8 GLSL, may be null
 *
 * The host accepts a version whose high 16 bits are 1 and whose low 16 bits
 * are not 0.
 *
 * generateTangentSpace works on one triangle list at a time. It reads every
 * corner through the callbacks and hands one tangent and bitangent sign back
 * per corner through setTangent. The host gives each call its own context,
 * and calls may run on several threads at once, so a plugin keeps no state
 * between calls.
 *
 * getTangentBasisInterpolation returns the body of the GLSL function
 *
 *   void interpolateTangent(inout vec3 normal, inout vec3 tangent, inout vec3 bitangent)
 *
 * that the GL bakers splice into their fragment shaders when the binormal is
 * rebuilt per fragment: it receives the interpolated, unnormalised frame and
 * rewrites it the way the target engine's pixel shader would.
 */

#ifdef __cplusplus
extern "C" {
#endif

#define TANGENT_SPACE_API_VERSION 0x10001u

typedef struct TangentSpaceContext TangentSpaceContext;

/* Six entries, in this order; the last one is null. */
typedef struct TangentSpaceCallbacks
{
    int (*getFaceCount)(const TangentSpaceContext* context);
    void (*getPosition)(const TangentSpaceContext* context, float out[3], int face, int corner);
    void (*getNormal)(const TangentSpaceContext* context, float out[3], int face, int corner);
    void (*getTexCoord)(const TangentSpaceContext* context, float out[2], int face, int corner);
    void (*setTangent)(const TangentSpaceContext* context, const float tangent[3], float sign, int face,
                       int corner);
    void* reserved;
} TangentSpaceCallbacks;

struct TangentSpaceContext
{
    const TangentSpaceCallbacks* callbacks;
    void* subMesh; /* opaque to the plugin */
};

typedef int (*GenerateTangentSpaceFunction)(const TangentSpaceContext* context, float angularThreshold);
typedef unsigned int (*GetAPIVersionFunction)(void);
typedef const char* (*GetTextFunction)(void);

#if defined(_WIN32)
#define TANGENT_SPACE_EXPORT __declspec(dllexport)
#else
#define TANGENT_SPACE_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
}
#endif
