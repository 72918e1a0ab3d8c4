#include "baking/PropertyCatalogue.h"

#include "baking/PropertyEnum.h"
#include "baking/PropertyNumerical.h"
#include "baking/PropertyPath.h"

#include <QCoreApplication>

#include <limits>
#include <map>
#include <vector>

namespace Ond::Baking {

namespace {

std::string tr(const char* text)
{
    return QCoreApplication::translate("Ond::Baking::PropertyBag", text).toStdString();
}

std::vector<std::string> trList(std::initializer_list<const char*> texts)
{
    std::vector<std::string> out;
    for (const char* text : texts)
        out.push_back(tr(text));
    return out;
}

constexpr float kFloatLowest = std::numeric_limits<float>::lowest();
constexpr float kFloatLargest = std::numeric_limits<float>::max();

using PropertyUPtr = std::unique_ptr<Property>;

PropertyUPtr makeInt(int value, int minimum, int maximum, const char* label, const char* help)
{
    return std::make_unique<PropertyNumerical<int>>(value, minimum, maximum, 1, 4, tr(label), tr(help));
}

PropertyUPtr makeFloat(float value, float minimum, float maximum, float step, int decimals, const char* label,
                       const char* help)
{
    return std::make_unique<PropertyNumerical<float>>(value, minimum, maximum, step, decimals, tr(label), tr(help));
}

// A float without bounds of its own.
PropertyUPtr makeFreeFloat(float value, const char* label, const char* help)
{
    return makeFloat(value, kFloatLowest, kFloatLargest, 0.005f, 4, label, help);
}

PropertyUPtr makeInt2(ComparableInt2 value, ComparableInt2 minimum, ComparableInt2 maximum, const char* label,
                      const char* help)
{
    return std::make_unique<PropertyNumerical<ComparableInt2>>(value, minimum, maximum, ComparableInt2{1, 1}, 4,
                                                               tr(label), tr(help));
}

PropertyUPtr makeColor(ComparableColorInt4 value, const char* label, const char* help)
{
    return std::make_unique<PropertyNumerical<ComparableColorInt4>>(
        value, ComparableColorInt4{0, 0, 0, 0}, ComparableColorInt4{255, 255, 255, 255},
        ComparableColorInt4{1, 1, 1, 1}, 4, tr(label), tr(help));
}

PropertyUPtr makeBool(bool value, const char* label, const char* help, bool visible = true)
{
    return std::make_unique<Property>(PropertyType::Bool, PropertyValue(value), tr(label), tr(help), visible);
}

PropertyUPtr makeEnum(int value, std::initializer_list<const char*> entries, const char* label, const char* help,
                      bool visible = true)
{
    return std::make_unique<PropertyEnum>(value, trList(entries), tr(label), tr(help), visible);
}

struct PathArgs
{
    const std::string& fileFilter;
    const std::string& extra;
};

PropertyUPtr makePath(const PathArgs& args, const char* label, const char* help, bool visible = true)
{
    return std::make_unique<PropertyPath>(args.fileFilter, args.extra, tr(label), tr(help), visible);
}

const std::initializer_list<const char*> kNormalFormats = {"OpenGL", "DirectX"};

// Properties shared by all bakers and the detail bakers' common ones.
PropertyUPtr createCommonOrDetail(const std::string& id, const PathArgs& path)
{
    if (id == "Common.OutputSize")
        return makeInt2({9, 9}, {5, 5}, {13, 13}, "Output Size", "Output size of the generated map.");
    if (id == "Common.UVSet")
        return makeInt(0, 0, 8, "UV Set", "Select UV set used to bake meshes information.");
    if (id == "Common.DilationWidth")
        return makeInt(1, 0, 128, "Dilation Width",
                       "Width of the dilation post-process (in pixels) applied before diffusion.");
    if (id == "Common.ApplyDiffusion")
        return makeBool(true, "Apply Diffusion", "Whether to use diffusion as a post-process after dilation, or not.");
    if (id == "Common.UVTile")
        return makeInt2({0, 0}, {-100000, -100000}, {100000, 100000}, "UV Tile", "UV Tile to bake.");

    if (id == "Detail.FilterMethod")
        return makeEnum(0, {"Always", "By Mesh Name"}, "Match",
                        "Choose which method is used to match low and high resolution geometry.");
    if (id == "Detail.IgnoreBackface")
        return makeBool(true, "Ignore Backface",
                        "Ignore backfacing triangles when trying to match low and high resolution geometry.");
    if (id == "Detail.InvertSkewCorrection")
        return makeBool(false, "Invert skew correction",
                        "If enabled, bright areas correspond to averaged direction and dark areas correspond to "
                        "straight directions.",
                        false);
    if (id == "Detail.LowAsHigh")
        return makeBool(false, "Use Low Poly Mesh as High Poly Mesh", "Use the low poly mesh as the high poly mesh.");
    if (id == "Detail.MaxDepth")
        return makeFloat(0.01f, 0.0f, 0.1f, 0.001f, 4, "Max Rear Distance", "Max rear distance for raytracing.");
    if (id == "Detail.MaxHeight")
        return makeFloat(0.01f, 0.0f, 0.1f, 0.001f, 4, "Max Frontal Distance", "Max frontal distance for raytracing.");
    if (id == "Detail.RelativeScale")
        return makeBool(true, "Relative to Bounding Box",
                        "Interpret the max distances as a factor of the mesh bounding box.");
    if (id == "Detail.SkewCorrection")
        return makeBool(false, "Use Skew Correction",
                        "Straighten rays direction based on a grayscale texture to avoid projection deformation.");
    if (id == "Detail.SkewMap")
        return makePath(path, "Skew Texture", "External skew texture from file.", false);
    if (id == "Detail.SmoothNormals")
        return makeBool(true, "Average Normals", "Compute rays directions based on averaged normals.");
    if (id == "Detail.SubSampling")
        return makeEnum(0, {"None", "Supersampling 4x", "Supersampling 16x", "Supersampling 64x"}, "Antialiasing",
                        "Antialiasing method.");
    if (id == "Detail.UseCage")
        return makeBool(false, "Use Cage", "Use cage to cast rays.");
    return nullptr;
}

// Properties of the from-mesh bakers beyond the shared ones; a few depend on
// the baker.
PropertyUPtr createDetailSpecific(const std::string& baker, const std::string& id, const PathArgs& path)
{
    const bool thickness = baker == "thicknessfrommesh";
    const bool curvature1 = baker == "curvature1frommesh";

    if (id == "Detail.Distance.MaximizeRange") {
        if (thickness)
            return makeEnum(1, {"Relative to Ray Distances", "Relative to Min/Max (per UV Tile)", "None"},
                            "Normalization", "Normalization of the resulting map.");
        return makeEnum(1,
                        {"Relative to Ray Distances", "Relative to Low Poly Mesh (per UV Tile)",
                         "Relative to Min/Max (per UV Tile)", "Manual"},
                        "Normalization", "Normalization of the resulting map.");
    }
    if (id == "Detail.Distance.Divisor")
        return makeFloat(1.0f, 0.00001f, 100.0f, 1.0f, 4, "Scaling Divisor",
                         "Divide every value of the resulting map by this parameter.");
    if (id == "Detail.NormalCommon.InvertGreen")
        return makeEnum(1, kNormalFormats, "Normal Orientation",
                        "Invert green component in normal map depending on selected format.");
    if (id == "Detail.NormalCommon.ResultType")
        return makeEnum(1, {"World Space", "Tangent Space"}, "Map Type", "Map Type.");
    if (id == "Detail.SecondaryCommon.Distribution")
        return makeEnum(1, {"Uniform", "Cosine"}, "Distribution", "Angular Distribution of Occlusion Rays.");
    if (id == "Detail.SecondaryCommon.FilterMethodSecondary") {
        if (curvature1)
            return makeEnum(0, {"Always", "Only Same Mesh Name"}, "Self Intersection",
                            "Choose what geometry will be tested for intersection.");
        return makeEnum(0, {"Always", "Only Same Mesh Name"}, "Self Occlusion",
                        "Choose what geometry will cause occlusion.");
    }
    if (id == "Detail.SecondaryCommon.IgnoreBackfaceSecondary")
        return makeEnum(0, {"Never", "Always", "By Mesh Name"}, "Ignore Backface",
                        "Ignore backfacing triangles for occlusion rays.");
    if (id == "Detail.SecondaryCommon.MaxDistance") {
        if (thickness)
            return makeFloat(0.1f, 0.00001f, 1.0f, 0.005f, 5, "Max Occluder Distance", "Maximum Occluder Distance.");
        return makeFloat(1.0f, 0.00001f, 1.0f, 0.01f, 5, "Max Occluder Distance", "Maximum Occluder Distance.");
    }
    if (id == "Detail.SecondaryCommon.MaxDistanceRelativeScale")
        return makeBool(true, "Relative to Bounding Box",
                        "Interpret the Occluder Distance as a factor of the mesh bounding box.");
    if (id == "Detail.SecondaryCommon.MinDistance")
        return makeFloat(0.00001f, 0.00001f, 0.01f, thickness ? 0.00001f : 0.0001f, 5, "Min Occluder Distance",
                         "Minimum Occluder Distance (bias).");
    if (id == "Detail.SecondaryCommon.NbSecondary") {
        if (curvature1)
            return makeInt(32, 1, 256, "Secondary Rays",
                           "Number of sampled neighbouring points used in curvature estimation (in [1; 256]).");
        return makeInt(64, 1, 256, "Secondary Rays", "Number of secondary rays (in [1; 256]).");
    }
    if (id == "Detail.SecondaryCommon.Spread")
        return makeFloat(180.0f, 0.0f, 180.0f, 1.0f, 1, "Spread Angle", "Maximum spread angle of occlusion rays.");
    if (id == "Detail.Color.ColorGenerator")
        return makeEnum(1, {"Random", "Hue Shift", "Grayscale"}, "Color Generator",
                        "Choose the method for generating colors from IDs.\n"
                        "Vertex Color: reads the vertex color from the high definition meshes\n"
                        "Material Color: reads the material color from the high definition meshes (works only for "
                        "FBX files)\n"
                        "Mesh ID: assigns a color per object from the high definition meshes\n"
                        "Polygroup / Submesh ID: assigns a color per subobject (also called element) from the high "
                        "definition meshes.");
    if (id == "Detail.Color.ColorSource")
        return makeEnum(1, {"Vertex Color", "Material Color", "File ID", "Mesh ID / Polygroup"}, "Color Source",
                        "Choose the source for color.");
    if (id == "Detail.AO.Attenuation")
        return makeEnum(2, {"None", "Smooth", "Linear"}, "Attenuation",
                        "How occlusion is attenuated by occluder distance");
    if (id == "Detail.AO.GroundPlane")
        return makeBool(false, "Ground Plane", "If enabled, adds an infinite plane under the baked mesh.");
    if (id == "Detail.AO.GroundOffset")
        return makeFloat(0.0f, 0.0f, kFloatLargest, 0.005f, 4, "Ground Plane Offset",
                         "Offset of the ground plane from the mesh lowest point.");
    if (id == "Detail.Texture.FilteringMode")
        return makeEnum(1, {"Nearest", "Bilinear"}, "Filtering Mode",
                        "Select the filtering mode used for texture pixel interpolation");
    if (id == "Detail.Texture.HighPolyUVSet")
        return makeEnum(0, {"UV 0", "UV 1", "UV 2"}, "UV Set",
                        "Select UV set used to map the texture on the high resolution mesh");
    if (id == "Detail.Texture.IsNormalMap")
        return makeBool(false, "Normal Map", "Makes the required computation to transfer tangent space normal map");
    if (id == "Detail.Texture.TextureFileName")
        return makePath(path, "Texture File", "Texture file to apply on the high resolution mesh");
    if (id == "Detail.Curvature.Intensity")
        return makeFloat(1.0f, 0.0f, kFloatLargest, 0.005f, 4, "Intensity",
                         "Multiply the computed curvature by this value");
    if (id == "Detail.Curvature.MaximizeRange")
        return makeBool(true, "Maximize Range (per UV Tile)",
                        "Ensures the resulting map occupies the whole spectrum of values");
    if (id == "Detail.Curvature.SoftSaturate")
        return makeBool(true, "Soft Saturate", "Softens the curvature values");
    if (id == "Detail.Curvature1.SamplingRadius")
        return makeFloat(0.001f, 0.00001f, 0.01f, 0.0001f, 4, "Sampling Radius",
                         "Radius of the disk to get surface samples from.");
    if (id == "Detail.Curvature1.AutoMinMax")
        return makeBool(true, "Auto Tonemapping (per UV Tile)",
                        "Tonemapping bounds will be computed on a per UV Tile basis.");
    if (id == "Detail.Curvature1.TonemappingMin")
        return makeFloat(-1.0f, kFloatLowest, kFloatLargest, 1.0f, 4, "Tonemapping Min", "Curvature minimum value.");
    if (id == "Detail.Curvature1.TonemappingMax")
        return makeFloat(1.0f, kFloatLowest, kFloatLargest, 1.0f, 4, "Tonemapping Max", "Curvature maximum value.");
    return nullptr;
}

// Properties of the bakers that need only the low mesh.
PropertyUPtr createLowPoly(const std::string& id, const PathArgs& path)
{
    if (id == "Additional.InvertGreen")
        return makeEnum(1, kNormalFormats, "Normal Orientation",
                        "Invert green component in normal map depending on selected format.", false);
    if (id == "Additional.NormalMap")
        return makePath(path, "Normal Map", "External normal map from file.");
    if (id == "Additional.NormalWorldSpace")
        return makeBool(false, "World Space", "Tell if the normal map is in world space.", false);
    if (id == "Curvature.CurvMult")
        return makeFloat(0.5f, 0.0f, 1.0f, 0.01f, 3, "Details", "Reveal details in the curvature");
    if (id == "Curvature.EnableSeams")
        return makeBool(true, "Enable Seams", "Show seams on the curvature map");
    if (id == "Curvature.PerVertex")
        return makeEnum(0, {"Per Pixel", "Per Vertex"}, "Algorithm",
                        "Choose curvature computation algorithm (per vertex / per pixel)");
    if (id == "Curvature.SeamsPower")
        return makeFloat(1.0f, 0.0f, 1.0f, 0.01f, 3, "Seams Intensity", "Intensity of the seams on the map");
    if (id == "Position.Axis")
        return makeEnum(0, {"X", "Y", "Z"}, "Axis", "Select which axis positions you want to bake", false);
    if (id == "Position.Mode")
        return makeEnum(0, {"All Axis", "One Axis"}, "Mode", "Select the processing mode");
    if (id == "Position.Normalization")
        return makeEnum(1, {"BBox", "BSphere", "None"}, "Normalization Type", "Positions normalization type");
    if (id == "Position.NormalizationScale")
        return makeEnum(1, {"Selected Materials", "Full Scene"}, "Normalization Scale",
                        "Positions normalization scale");
    if (id == "NWS.BakeType")
        return makeEnum(0, {"Normal", "Tangent", "Binormal"}, "Baking Type", "The type of map to bake.");
    if (id == "SeAO.DistanceFade")
        return makeFloat(0.01f, 0.0f, 100.0f, 0.1f, 4, "Distance Fade", "Spread of the ambient occlusion");
    if (id == "SeAO.ErrorBias")
        return makeFloat(0.6f, 0.0f, 100.0f, 0.1f, 4, "Precision Bias",
                         "A lower value will be more precise but will easily produce artifacts.");
    if (id == "SeAO.InvertNormals")
        return makeBool(false, "Invert Normals", "Invert the normals.");
    if (id == "SeAO.Quality")
        return makeEnum(1, {"Low", "Medium", "High", "Very High"}, "Quality",
                        "Quality of the ambient occlusion. A higher quality is slower.");
    if (id == "SeAO.UseNeighbors")
        return makeBool(false, "Use unselected Mesh Parts", "Use unselected mesh parts to compute the ambient occlusion.");
    if (id == "UV2Svg.ColorMode")
        return makeEnum(1, {"Random", "Hue Shift", "Grayscale", "Uniform", "Material ID Color"}, "Color Mode",
                        "How svg shapes will be colored.");
    if (id == "UV2Svg.Padding")
        return makeInt(0, 0, 16, "Padding", "Padding to add to the svg shapes.");
    if (id == "WorldDirection.ConstDirection")
        return makeEnum(1, {"From Texture", "From uniform Vector"}, "Input Direction", "Input direction.");
    if (id == "WorldDirection.DirectionMap")
        return makePath(path, "Direction File",
                        "Input texture file giving a direction per pixel to be translated from world space "
                        "coordinates to texture space coordinates",
                        false);
    if (id == "WorldDirection.X")
        return makeFreeFloat(0.0f, "X", "World space direction vector component");
    if (id == "WorldDirection.Y")
        return makeFreeFloat(-1.0f, "Y", "World space direction vector component");
    if (id == "WorldDirection.Z")
        return makeFreeFloat(0.0f, "Z", "World space direction vector component");
    if (id == "Mask.FGColor")
        return makeColor({255, 0, 0, 255}, "Mask Color", "Color of the UV mask.");
    if (id == "Mask.BGColor")
        return makeColor({0, 0, 0, 0}, "Background Color", "Background color of the UV mask.");
    return nullptr;
}

const std::map<std::string, std::string>& optionNames()
{
    static const std::map<std::string, std::string> names = {
        {"Common.OutputSize", "output-size"},
        {"Common.UVSet", "uv-set"},
        {"Common.DilationWidth", "dilation-width"},
        {"Common.ApplyDiffusion", "apply-diffusion"},
        {"Common.UVTile", "uv-tile"},
        {"Detail.FilterMethod", "match"},
        {"Detail.IgnoreBackface", "ignore-backface"},
        {"Detail.InvertSkewCorrection", "invert-skew-correction"},
        {"Detail.LowAsHigh", "use-lowdef-as-highdef"},
        {"Detail.MaxDepth", "max-rear"},
        {"Detail.MaxHeight", "max-frontal"},
        {"Detail.RelativeScale", "relative-to-bbox"},
        {"Detail.SkewCorrection", "skew-correction"},
        {"Detail.SkewMap", "skew-map"},
        {"Detail.SmoothNormals", "average-normals"},
        {"Detail.SubSampling", "antialiasing"},
        {"Detail.UseCage", "use-cage"},
        {"Detail.Distance.MaximizeRange", "auto-normalize"},
        {"Detail.Distance.Divisor", "divisor"},
        {"Detail.NormalCommon.InvertGreen", "normal-format"},
        {"Detail.NormalCommon.ResultType", "map-type"},
        {"Detail.SecondaryCommon.Distribution", "ray-distrib"},
        {"Detail.SecondaryCommon.FilterMethodSecondary", "self-occlusion"},
        {"Detail.SecondaryCommon.IgnoreBackfaceSecondary", "ignore-backface-secondary"},
        {"Detail.SecondaryCommon.MaxDistance", "max-dist"},
        {"Detail.SecondaryCommon.MaxDistanceRelativeScale", "max-dist-relative-scale"},
        {"Detail.SecondaryCommon.MinDistance", "min-dist"},
        {"Detail.SecondaryCommon.NbSecondary", "nb-second-rays"},
        {"Detail.SecondaryCommon.Spread", "spread-angle"},
        {"Detail.Color.ColorGenerator", "color-generator"},
        {"Detail.Color.ColorSource", "color-source"},
        {"Detail.AO.Attenuation", "attenuation"},
        {"Detail.AO.GroundPlane", "enable-ground-plane"},
        {"Detail.AO.GroundOffset", "ground-offset"},
        {"Detail.Texture.FilteringMode", "filtering-mode"},
        {"Detail.Texture.HighPolyUVSet", "high-poly-uv-set"},
        {"Detail.Texture.IsNormalMap", "normal-map"},
        {"Detail.Texture.TextureFileName", "texture-file"},
        {"Detail.Curvature.Intensity", "intensity"},
        {"Detail.Curvature.MaximizeRange", "maximize-range"},
        {"Detail.Curvature.SoftSaturate", "soft-saturate"},
        {"Detail.Curvature1.SamplingRadius", "sampling-radius"},
        {"Detail.Curvature1.AutoMinMax", "auto-minmax"},
        {"Detail.Curvature1.TonemappingMin", "tonemapping-min"},
        {"Detail.Curvature1.TonemappingMax", "tonemapping-max"},
        {"Additional.InvertGreen", "normal-format"},
        {"Additional.NormalMap", "normal"},
        {"Additional.NormalWorldSpace", "normal-world-space"},
        {"Curvature.CurvMult", "details"},
        {"Curvature.EnableSeams", "enable-seams"},
        {"Curvature.PerVertex", "algorithm"},
        {"Curvature.SeamsPower", "seams-power"},
        {"Position.Axis", "axis"},
        {"Position.Mode", "mode"},
        {"Position.Normalization", "normalization"},
        {"Position.NormalizationScale", "normalization-scale"},
        {"NWS.BakeType", "normal-type"},
        {"SeAO.DistanceFade", "spread"},
        {"SeAO.ErrorBias", "details"},
        {"SeAO.InvertNormals", "normal-invert"},
        {"SeAO.Quality", "quality"},
        {"SeAO.UseNeighbors", "use-neighbors"},
        {"UV2Svg.ColorMode", "mode"},
        {"UV2Svg.Padding", "padding"},
        {"WorldDirection.ConstDirection", "direction"},
        {"WorldDirection.DirectionMap", "direction-file"},
        {"WorldDirection.X", "direction-x"},
        {"WorldDirection.Y", "direction-y"},
        {"WorldDirection.Z", "direction-z"},
    };
    return names;
}

const std::map<std::string, std::string>& olderIdentifiers()
{
    static const std::map<std::string, std::string> names = {
        {"AbstractMapBaker.OutputSize", "Common.OutputSize"},
        {"AbstractMapBaker.UVSet", "Common.UVSet"},
        {"AbstractMapBaker.DilationWidth", "Common.DilationWidth"},
        {"AbstractMapBaker.ApplyDiffusion", "Common.ApplyDiffusion"},
        {"FilterMethod", "Detail.FilterMethod"},
        {"IgnoreBackface", "Detail.IgnoreBackface"},
        {"InvertSkewCorrection", "Detail.InvertSkewCorrection"},
        {"UseLowPolyAsHighPoly", "Detail.LowAsHigh"},
        {"MaxDepth", "Detail.MaxDepth"},
        {"MaxHeight", "Detail.MaxHeight"},
        {"RelativeScale", "Detail.RelativeScale"},
        {"SkewCorrection", "Detail.SkewCorrection"},
        {"SkewMap", "Detail.SkewMap"},
        {"SmoothNormals", "Detail.SmoothNormals"},
        {"SubSampling", "Detail.SubSampling"},
        {"UseCage", "Detail.UseCage"},
        {"NormalWP", "Additional.NormalWorldSpace"},
        {"ResultType", "Detail.NormalCommon.ResultType"},
        {"Distribution", "Detail.SecondaryCommon.Distribution"},
        {"FilterMethodSecondary", "Detail.SecondaryCommon.FilterMethodSecondary"},
        {"IgnoreBackfaceSecondary", "Detail.SecondaryCommon.IgnoreBackfaceSecondary"},
        {"MaxDistance", "Detail.SecondaryCommon.MaxDistance"},
        {"MaxDistanceRelativeScale", "Detail.SecondaryCommon.MaxDistanceRelativeScale"},
        {"MinDistance", "Detail.SecondaryCommon.MinDistance"},
        {"NbSecondary", "Detail.SecondaryCommon.NbSecondary"},
        {"Spread", "Detail.SecondaryCommon.Spread"},
        {"Axis", "Position.Axis"},
        {"Mode", "Position.Mode"},
        {"Normalization", "Position.Normalization"},
        {"NormalizationScale", "Position.NormalizationScale"},
        {"SeAOMapBaker.DistanceFade", "SeAO.DistanceFade"},
        {"SeAOMapBaker.ErrorBias", "SeAO.ErrorBias"},
        {"SeAOMapBaker.InvertNormals", "SeAO.InvertNormals"},
        {"SeAOMapBaker.Quality", "SeAO.Quality"},
        {"SeAOMapBaker.UseNeighbors", "SeAO.UseNeighbors"},
        {"Attenuation", "Detail.AO.Attenuation"},
        {"CurvatureMapBaker.CurvMult", "Curvature.CurvMult"},
        {"CurvatureMapBaker.EnableSeams", "Curvature.EnableSeams"},
        {"CurvatureMapBaker.PerVertex", "Curvature.PerVertex"},
        {"CurvatureMapBaker.SeamsPower", "Curvature.SeamsPower"},
        {"Intensity", "Detail.Curvature.Intensity"},
        {"SoftSaturate", "Detail.Curvature.SoftSaturate"},
        {"ColorSource", "Detail.Color.ColorSource"},
        {"ColorGenerator", "Detail.Color.ColorGenerator"},
        {"BakeType", "NWS.BakeType"},
        {"FilteringMode", "Detail.Texture.FilteringMode"},
        {"HighPolyUVSet", "Detail.Texture.HighPolyUVSet"},
        {"TextureFileName", "Detail.Texture.TextureFileName"},
        {"VectorialMeshConverter.ColorMode", "UV2Svg.ColorMode"},
        {"VectorialMeshConverter.Padding", "UV2Svg.Padding"},
        {"ConstDirection", "WorldDirection.ConstDirection"},
        {"DirectionMap", "WorldDirection.DirectionMap"},
        {"WorldDirectionX", "WorldDirection.X"},
        {"WorldDirectionY", "WorldDirection.Y"},
        {"WorldDirectionZ", "WorldDirection.Z"},
    };
    return names;
}

} // namespace

std::unique_ptr<Property> createProperty(const std::string& bakerIdentifier, const std::string& id,
                                         const std::string& fileFilter, const std::string& pathExtra)
{
    const PathArgs path{fileFilter, pathExtra};
    if (PropertyUPtr p = createCommonOrDetail(id, path))
        return p;
    if (PropertyUPtr p = createDetailSpecific(bakerIdentifier, id, path))
        return p;
    return createLowPoly(id, path);
}

std::string optionName(const std::string& propertyId)
{
    const auto& names = optionNames();
    auto it = names.find(propertyId);
    return it == names.end() ? std::string() : it->second;
}

std::string currentPropertyIdentifier(const std::string& storedId)
{
    const auto& names = olderIdentifiers();
    auto it = names.find(storedId);
    return it == names.end() ? storedId : it->second;
}

} // namespace Ond::Baking
