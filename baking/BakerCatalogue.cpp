#include "baking/BakerCatalogue.h"

#include <algorithm>
#include <initializer_list>
#include <map>

namespace Ond::Baking {

const std::vector<BakerInfo>& registeredBakers()
{
    static const std::vector<BakerInfo> bakers = {
        {"GLMapBakerManager.AOFromDetail", "aofrommesh", "ambient-occlusion-from-mesh",
         "Ambient Occlusion Map from Mesh",
         "This baker allows you to extract an ambient occlusion map (soft shadowing in occluded areas)."},
        {"GLMapBakerManager.BentNormalsFromDetail", "bentnormalsfrommesh", "bent-normal-from-mesh",
         "Bent Normals Map from Mesh",
         "This baker allows you to extract the average direction of ambient lighting.\n"
         "The computation is very similar to the ambient occlusion (from mesh) baker."},
        {"GLMapBakerManager.ColorFromDetail", "colorfrommesh", "color-from-mesh", "Color Map from Mesh",
         "This baker allows you to extract an identification map (useful for masking)."},
        {"GLMapBakerManager.ColorMap", "uvmap", "uv-map", "Convert UV to SVG",
         "This baker allows you to transform your UV into a vector graphic file to easily create masks."},
        {"GLMapBakerManager.Curvature", "curvature", "curvature", "Curvature (deprecated)",
         "This baker allows you to extract a curvature map that contains convexity/concavity information of the "
         "mesh."},
        {"GLMapBakerManager.Curvature1FromDetail", "curvature1frommesh", "curvature-from-mesh-v2",
         "Curvature Map from Mesh", "This baker allows you to extract a curvature map from a high definition mesh."},
        {"GLMapBakerManager.CurvatureFromDetail", "curvaturefrommesh", "curvature-from-mesh",
         "Curvature Map from Mesh (deprecated)",
         "This baker allows you to extract a curvature map from a high definition mesh. (This implementation is "
         "deprecated)"},
        {"GLMapBakerManager.HeightFromDetail", "heightfrommesh", "height-from-mesh", "Height Map from Mesh",
         "This baker allows you to extract a height map from a high definition mesh."},
        {"GLMapBakerManager.MaskFromDetail", "maskfrommesh", "opacity-mask-from-mesh", "Opacity Mask from Mesh",
         "This baker allows you to create an opacity map using a high poly mesh.\n"
         "It will generate a grayscale binary image based on the ray casting results."},
        {"GLMapBakerManager.NormalFromDetail", "normalfrommesh", "normal-from-mesh", "Normal Map from Mesh",
         "This baker allows you to extract a tangent space normal map from a high definition mesh."},
        {"GLMapBakerManager.NormalWS", "normalworldspace", "normal-world-space", "World Space Normals",
         "This baker allows you to extract normals coordinates relative to a fixed frame in the object space."},
        {"GLMapBakerManager.Position", "position", "position", "Position",
         "This baker allows you to extract the position (x,y,z world space coordinates) of all points at the "
         "surface of the mesh."},
        {"GLMapBakerManager.PositionFromDetail", "positionfrommesh", "position-from-mesh", "Position Map from Mesh",
         "This baker allows you to extract a position map from a high definition mesh."},
        {"GLMapBakerManager.SeAO", "ambientocclusion", "ambient-occlusion", "Ambient Occlusion (deprecated)",
         "This baker allows you to extract ambient occlusion (soft shadowing in occluded areas) using the mesh and "
         "a normal map (no high poly needed).\nIt uses a fast algorithm executed on the GPU."},
        {"GLMapBakerManager.TextureFromDetail", "texturefrommesh", "texture-from-mesh",
         "Transferred Texture from Mesh",
         "This baker allows you to transfer an existing texture from an object to another.\n"
         "It can be used, for example, to project a texture on different UV coordinates."},
        {"GLMapBakerManager.ThicknessFromDetail", "thicknessfrommesh", "thickness-from-mesh",
         "Thickness Map from Mesh",
         "This baker allows you to extract the width of the mesh at each point averaged over directions opposite "
         "to the normal.\nIt is very similar to the ambient occlusion baker except it will cast the rays in the "
         "opposite direction of the surface normal."},
        {"GLMapBakerManager.WorldDirection", "worldspacedirection", "world-space-direction",
         "World Space Direction",
         "This baker allows you to transform vector directions from world space coordinates to tangent space "
         "coordinates.\nThe direction can come from a texture or an uniform vector."},
    };
    return bakers;
}

const BakerInfo* findBakerByKey(const std::string& key)
{
    for (const BakerInfo& info : registeredBakers())
        if (key == info.key)
            return &info;
    return nullptr;
}

const BakerInfo* findBakerByIdentifier(const std::string& identifier)
{
    for (const BakerInfo& info : registeredBakers())
        if (identifier == info.identifier)
            return &info;
    return nullptr;
}

std::string subcommandName(const std::string& bakerIdentifier)
{
    const BakerInfo* info = findBakerByIdentifier(bakerIdentifier);
    return info ? std::string(info->subcommand) : std::string();
}

const std::vector<std::string>& commonPropertyIdentifiers()
{
    static const std::vector<std::string> ids = {"Common.OutputSize", "Common.UVSet", "Common.DilationWidth",
                                                 "Common.ApplyDiffusion", "Common.UVTile"};
    return ids;
}

namespace {

using Ids = std::vector<std::string>;

const Ids kDetail = {"Detail.LowAsHigh",     "Detail.UseCage",     "Detail.MaxHeight",
                     "Detail.MaxDepth",      "Detail.RelativeScale", "Detail.SmoothNormals",
                     "Detail.IgnoreBackface", "Detail.SubSampling",  "Detail.SkewCorrection",
                     "Detail.FilterMethod",  "Detail.SkewMap",     "Detail.InvertSkewCorrection"};
const Ids kNormalCommon = {"Detail.NormalCommon.InvertGreen", "Detail.NormalCommon.ResultType"};
const Ids kSecondary = {"Detail.SecondaryCommon.Distribution",
                        "Detail.SecondaryCommon.FilterMethodSecondary",
                        "Detail.SecondaryCommon.IgnoreBackfaceSecondary",
                        "Detail.SecondaryCommon.MaxDistance",
                        "Detail.SecondaryCommon.MaxDistanceRelativeScale",
                        "Detail.SecondaryCommon.MinDistance",
                        "Detail.SecondaryCommon.NbSecondary",
                        "Detail.SecondaryCommon.Spread"};
const Ids kAdditional = {"Additional.NormalMap", "Additional.NormalWorldSpace", "Additional.InvertGreen"};
const Ids kPosition = {"Position.Mode", "Position.Axis", "Position.Normalization", "Position.NormalizationScale"};

Ids join(std::initializer_list<Ids> parts)
{
    Ids out;
    for (const Ids& part : parts)
        out.insert(out.end(), part.begin(), part.end());
    return out;
}

Ids without(Ids ids, const std::string& id)
{
    ids.erase(std::remove(ids.begin(), ids.end(), id), ids.end());
    return ids;
}

const std::map<std::string, Ids>& ownLists()
{
    static const std::map<std::string, Ids> lists = {
        {"heightfrommesh", join({kDetail, {"Detail.Distance.MaximizeRange", "Detail.Distance.Divisor"}})},
        {"normalfrommesh", join({kDetail, kNormalCommon})},
        {"colorfrommesh", join({kDetail, {"Detail.Color.ColorSource", "Detail.Color.ColorGenerator"}})},
        {"aofrommesh", join({kDetail, kSecondary, kAdditional,
                             {"Detail.AO.Attenuation", "Detail.AO.GroundPlane", "Detail.AO.GroundOffset"}})},
        {"bentnormalsfrommesh", join({kDetail, kNormalCommon, kSecondary})},
        {"maskfrommesh", kDetail},
        {"thicknessfrommesh",
         join({kDetail, without(kSecondary, "Detail.SecondaryCommon.IgnoreBackfaceSecondary"),
               {"Detail.Distance.MaximizeRange"}})},
        {"texturefrommesh", join({kDetail, kNormalCommon,
                                  {"Detail.Texture.TextureFileName", "Detail.Texture.HighPolyUVSet",
                                   "Detail.Texture.FilteringMode", "Detail.Texture.IsNormalMap"}})},
        {"positionfrommesh", join({kDetail, kPosition})},
        {"curvaturefrommesh", join({kDetail, {"Detail.Curvature.Intensity", "Detail.Curvature.SoftSaturate",
                                              "Detail.Curvature.MaximizeRange"}})},
        {"curvature1frommesh",
         join({kDetail, kAdditional,
               {"Detail.SecondaryCommon.NbSecondary", "Detail.Curvature1.SamplingRadius",
                "Detail.SecondaryCommon.MaxDistanceRelativeScale", "Detail.SecondaryCommon.FilterMethodSecondary",
                "Detail.Curvature1.AutoMinMax", "Detail.Curvature1.TonemappingMin",
                "Detail.Curvature1.TonemappingMax"}})},
        {"curvature", join({{"Curvature.PerVertex", "Curvature.CurvMult", "Curvature.EnableSeams",
                             "Curvature.SeamsPower"},
                            kAdditional})},
        {"normalworldspace", {"NWS.BakeType", "Additional.NormalMap", "Additional.InvertGreen"}},
        {"position", kPosition},
        {"ambientocclusion", join({{"SeAO.InvertNormals", "SeAO.UseNeighbors", "SeAO.Quality", "SeAO.ErrorBias",
                                    "SeAO.DistanceFade"},
                                   kAdditional})},
        {"worldspacedirection", {"WorldDirection.ConstDirection", "WorldDirection.X", "WorldDirection.Y",
                                 "WorldDirection.Z", "WorldDirection.DirectionMap", "Additional.InvertGreen"}},
        {"uvmap", {"UV2Svg.Padding", "UV2Svg.ColorMode"}},
        {"uvmask", {"Mask.BGColor", "Mask.FGColor"}},
    };
    return lists;
}

} // namespace

std::vector<std::string> ownPropertyIdentifiers(const std::string& bakerIdentifier)
{
    const auto& lists = ownLists();
    auto it = lists.find(bakerIdentifier);
    return it == lists.end() ? std::vector<std::string>() : it->second;
}

} // namespace Ond::Baking
