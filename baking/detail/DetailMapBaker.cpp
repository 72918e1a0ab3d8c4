#include "baking/detail/DetailMapBaker.h"

#include "baking/BakerCatalogue.h"
#include "baking/AbstractBakingContext.h"
#include "baking/BakerRequirements.h"
#include "baking/detail/BackendRunner.h"
#include "baking/detail/CurvatureParams.h"
#include "baking/detail/DetailKernels.h"
#include "baking/detail/DetailNormalsBuilder.h"
#include "baking/detail/DetailValueMaps.h"
#include "baking/detail/PositionParams.h"
#include "baking/detail/SceneBox.h"
#include "baking/detail/SecondaryRayParams.h"
#include "baking/detail/TangentSpaceConversion.h"
#include "baking/detail/TextureParams.h"
#include "baking/lowpoly/LowPolyProperties.h"
#include "baking/lowpoly/PostProcess.h"
#include "baking/lowpoly/SourceMap.h"
#include "program/ConsoleProgress.h"
#include "program/LogChannel.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>

namespace Ond::Baking {

namespace {

struct KindTexts
{
    const char* identifier;
    const char* progressName;
};

// In kind order.
const KindTexts kKinds[DetailMapBaker::KindCount] = {
    {"heightfrommesh", "Height from mesh"},
    {"normalfrommesh", "Normal from mesh"},
    {"colorfrommesh", "Color from mesh"},
    {"aofrommesh", "Ambient occlusion from mesh"},
    {"bentnormalsfrommesh", "Bent normals from mesh"},
    {"maskfrommesh", "Opacity mask from mesh"},
    {"thicknessfrommesh", "Thickness from mesh"},
    {"texturefrommesh", "Texture from mesh"},
    {"positionfrommesh", "Position from mesh"},
    {"curvaturefrommesh", "Curvature from mesh"},
    {"curvature1frommesh", "Curvature1 from mesh"},
};

} // namespace

DetailMapBaker::DetailMapBaker(Kind kind)
    : m_kind(kind)
{
}

std::vector<std::string> DetailMapBaker::ownPropertyIdentifiers() const
{
    return Baking::ownPropertyIdentifiers(identifier());
}

QString DetailMapBaker::label() const
{
    const BakerInfo* info = findBakerByIdentifier(identifier());
    return info ? trBaking(info->label) : QString();
}

QString DetailMapBaker::description() const
{
    const BakerInfo* info = findBakerByIdentifier(identifier());
    return info ? trBaking(info->description) : QString();
}

std::string DetailMapBaker::identifier() const
{
    return kKinds[m_kind].identifier;
}

bool DetailMapBaker::isAvailable(QString* why) const
{
    return checkGlVersion33(why) && checkSse3(why);
}

QString DetailMapBaker::progressName() const
{
    return trBaking(kKinds[m_kind].progressName);
}

Surfaces::SurfaceSPtr DetailMapBaker::process(AbstractBakingContext& context, const SceneGraph::SceneSPtr& low,
                                              const SceneGraph::SceneSPtr& high, const SceneGraph::SceneSPtr& cage)
{
    using namespace LowPolyProperties;
    using Clock = std::chrono::steady_clock;
    registerDetailKernels();

    const PropertyBag& bag = properties();
    const int uvSet = std::max(value<int>(bag, "Common.UVSet", 0), 0);
    const int dilationWidth = value<int>(bag, "Common.DilationWidth", 1);
    const bool applyDiffusion = value<bool>(bag, "Common.ApplyDiffusion", true);
    const ComparableInt2 uvTile = value<ComparableInt2>(bag, "Common.UVTile", {});

    const bool lowAsHigh = value<bool>(bag, "Detail.LowAsHigh", false) || !high;
    const SceneGraph::SceneSPtr highScene = lowAsHigh ? low : high;

    const SceneBox box = cachedBoundingBox(highScene);
    const float largestExtent = box.largestExtent();

    const bool useCage = value<bool>(bag, "Detail.UseCage", false);
    const bool ignoreBackface = value<bool>(bag, "Detail.IgnoreBackface", true);
    const int match = value<int>(bag, "Detail.FilterMethod", 0);
    const bool secondaryFilterKind = (0x458u >> unsigned(m_kind)) & 1u;
    const int selfOcclusion =
        secondaryFilterKind ? value<int>(bag, "Detail.SecondaryCommon.FilterMethodSecondary", 0) : 0;

    DetailBakeJob job;
    if (lowAsHigh) {
        job.maxHeight = job.maxDepth = 1e-05f * box.largestAbsoluteCoordinate();
    } else if (useCage) {
        job.maxHeight = 1.0f;
        job.maxDepth = 3.4028235e+38f;
    } else {
        job.maxHeight = value<float>(bag, "Detail.MaxHeight", 0.01f);
        job.maxDepth = value<float>(bag, "Detail.MaxDepth", 0.01f);
        if (value<bool>(bag, "Detail.RelativeScale", true)) {
            job.maxHeight *= largestExtent;
            job.maxDepth *= largestExtent;
        }
    }
    // Huge reaches overflow, and a box from a broken mesh may be no number:
    // the reach, and with it every ray's tfar, stays a float.
    for (float* reach : {&job.maxHeight, &job.maxDepth})
        *reach = std::isnan(*reach) ? 0.0f : std::clamp(*reach, -3.4028235e+38f, 3.4028235e+38f);

    // An unreadable skew map is ignored: the bake goes on without it.
    if (value<bool>(bag, "Detail.SkewCorrection", false) && !useCage) {
        Surfaces::SurfaceSPtr skew;
        const QString skewPath = path(bag, "Detail.SkewMap");
        if (!skewPath.isEmpty() && context.loadSurface(skewPath, skew) && skew && !skew->isEmpty())
            job.skewSurface = resampleToPowerOfTwo(skew);
    }
    const bool skewLoaded = bool(job.skewSurface);

    const QSize size = outputSize();
    job.name = progressName();
    job.useGpu = context.gpuAllowed();
    job.forceDxr = context.forceDxr();
    job.forceOptix = context.forceOptix();
    job.context = &context;
    job.lowScene = low;
    job.highScene = highScene;
    if (useCage)
        job.cageScene = cage;
    job.uvSet = uvSet;
    job.uvTile = {uvTile.x, uvTile.y};
    job.width = unsigned(std::max(size.width(), 1));
    job.height = unsigned(std::max(size.height(), 1));
    job.subSamples = 1u << unsigned(std::clamp(value<int>(bag, "Detail.SubSampling", 0), 0, 3));

    uint32_t flags = 0;
    if (!useCage && (skewLoaded || value<bool>(bag, "Detail.SmoothNormals", true)))
        flags |= BakeJobFlags::SmoothNormals;
    if (match == 1)
        flags |= BakeJobFlags::FilterPrimaryById;
    if (secondaryFilterKind && selfOcclusion == 1)
        flags |= BakeJobFlags::FilterSecondaryById;
    if (m_kind == Color)
        flags |= BakeJobFlags::GrabColors;
    const bool normalMapKind = m_kind == AmbientOcclusion || m_kind == Curvature1;
    if (normalMapKind && !path(bag, "Additional.NormalMap").isEmpty())
        flags |= BakeJobFlags::GrabUvs;
    if (ignoreBackface)
        flags |= BakeJobFlags::IgnoreBackface;
    if (skewLoaded) {
        flags |= BakeJobFlags::UseSkew;
        if (value<bool>(bag, "Detail.InvertSkewCorrection", false))
            flags |= BakeJobFlags::InvertSkew;
    }
    if (useCage)
        flags |= BakeJobFlags::UseCage;
    job.flags = flags;

    // Secondary distances, scaled like the primary ones.
    const float distanceScale = value<bool>(bag, "Detail.SecondaryCommon.MaxDistanceRelativeScale", true)
        ? largestExtent
        : 1.0f;
    const float minDistance = value<float>(bag, "Detail.SecondaryCommon.MinDistance", 0.00001f) * distanceScale;
    const float maxDistance = value<float>(bag, "Detail.SecondaryCommon.MaxDistance", 1.0f) * distanceScale;
    const int distribution = value<int>(bag, "Detail.SecondaryCommon.Distribution", 1);
    const float spread = value<float>(bag, "Detail.SecondaryCommon.Spread", 180.0f);
    const int sampleCount = std::clamp(value<int>(bag, "Detail.SecondaryCommon.NbSecondary", 64), 1, 256);
    const uint32_t backfaceCulling = uint32_t(value<int>(bag, "Detail.SecondaryCommon.IgnoreBackfaceSecondary", 0));
    // The six leading fields the occlusion, bent-normal and thickness records share.
    const auto secondaryRays = [&](auto& record, uint32_t cullMode) {
        record.distribution = distribution;
        record.spreadAngle = spread;
        record.sampleCount = sampleCount;
        record.minDistance = minDistance;
        record.maxDistance = maxDistance;
        record.cullMode = cullMode;
    };

    // The low mesh's own normal map stands in for the detail it lacks.
    std::optional<DetailNormals> detailNormals;
    if (lowAsHigh && normalMapKind && low) {
        DetailNormalsSource source;
        source.path = path(bag, "Additional.NormalMap");
        source.worldSpace = value<bool>(bag, "Additional.NormalWorldSpace", false);
        source.invertGreen = value<int>(bag, "Additional.InvertGreen", 1) == 1;
        source.uvSet = uint32_t(uvSet);
        source.uvTile = {uvTile.x, uvTile.y};
        detailNormals = buildDetailNormals(context, *low, source);
        // The grabbed UVs address the map: they are the low mesh's own.
        job.highUvSet = uvSet;
    }

    AOParams aoParams;
    BentNormalsParams bentParams;
    ThicknessParams thicknessParams;
    TextureParams textureParams;
    TextureNormalParams textureNormalParams;
    PositionParams positionParams;
    CurvatureParams curvatureParams;
    Curvature1Params curvature1Params;
    bool textureIsNormalMap = false;

    switch (m_kind) {
    case Height:
        job.kind = BakeJobKind::Height;
        break;
    case Normal:
        job.kind = BakeJobKind::Normal;
        break;
    case Color: {
        const int source = value<int>(bag, "Detail.Color.ColorSource", 1);
        if (source == 0)
            job.kind = BakeJobKind::VertexColor;
        else if (source >= 1 && source <= 3)
            job.kind = BakeJobKind::TriangleColor;
        job.colorSource = source;
        job.colorGenerator = value<int>(bag, "Detail.Color.ColorGenerator", 1);
        break;
    }
    case AmbientOcclusion:
        secondaryRays(aoParams, backfaceCulling);
        aoParams.attenuation = value<int>(bag, "Detail.AO.Attenuation", 2);
        aoParams.detailNormals = detailNormals ? &*detailNormals : nullptr;
        aoParams.groundPlane = value<bool>(bag, "Detail.AO.GroundPlane", false);
        aoParams.groundY = box.minimum[1] - std::max(1.0f, std::fabs(box.minimum[1])) * 1.1920929e-07f
            - value<float>(bag, "Detail.AO.GroundOffset", 0.0f);
        job.kind = BakeJobKind::AmbientOcclusion;
        job.params = &aoParams;
        break;
    case BentNormals:
        secondaryRays(bentParams, backfaceCulling);
        job.kind = BakeJobKind::BentNormals;
        job.params = &bentParams;
        break;
    case Mask:
        job.kind = BakeJobKind::Mask;
        break;
    case Thickness:
        secondaryRays(thicknessParams, 0);
        job.kind = BakeJobKind::Thickness;
        job.params = &thicknessParams;
        break;
    case Texture: {
        Surfaces::SurfaceSPtr texture;
        if (!context.loadSurface(path(bag, "Detail.Texture.TextureFileName"), texture) || !texture
            || texture->isEmpty())
            throw std::runtime_error(
                QCoreApplication::translate("Ond::Baking::DetailMapBaker", "Detail texture loading failed")
                    .toStdString());
        texture = resampleToPowerOfTwo(texture);
        const bool bilinear = value<int>(bag, "Detail.Texture.FilteringMode", 1) == 1;
        std::shared_ptr<const Surfaces::IGenericSampler> sampler(Surfaces::createSampler(texture, bilinear));
        job.highUvSet = value<int>(bag, "Detail.Texture.HighPolyUVSet", 0);
        textureIsNormalMap = value<bool>(bag, "Detail.Texture.IsNormalMap", false)
            && value<int>(bag, "Detail.NormalCommon.ResultType", 1) == 1;
        if (textureIsNormalMap) {
            textureNormalParams.sampler = sampler;
            textureNormalParams.invertGreen = value<int>(bag, "Detail.NormalCommon.InvertGreen", 1) == 1;
            textureNormalParams.perFragmentBinormal = context.perFragmentBinormal();
            job.kind = BakeJobKind::TextureNormal;
            job.params = &textureNormalParams;
            job.flags |= BakeJobFlags::GrabTangents | BakeJobFlags::GrabUvs;
        } else {
            textureParams.sampler = sampler;
            job.kind = BakeJobKind::Texture;
            job.params = &textureParams;
            job.flags |= BakeJobFlags::GrabUvs;
        }
        break;
    }
    case Position:
        positionParams = positionParamsOf(bag, *low, uint32_t(uvSet));
        job.kind = BakeJobKind::Position;
        job.params = &positionParams;
        break;
    case Curvature:
        curvatureParams.softSaturate = value<bool>(bag, "Detail.Curvature.SoftSaturate", true);
        curvatureParams.intensity = value<float>(bag, "Detail.Curvature.Intensity", 1.0f);
        job.kind = BakeJobKind::Curvature;
        job.params = &curvatureParams;
        break;
    case Curvature1:
        curvature1Params.distribution = 0;
        curvature1Params.spreadAngle = float(std::atan(1.0) * 360.0 / 3.1415927);
        curvature1Params.sampleCount = std::clamp(value<int>(bag, "Detail.SecondaryCommon.NbSecondary", 32), 1, 256);
        curvature1Params.minDistance = 0.0f;
        curvature1Params.maxDistance = 0.0f;
        curvature1Params.cullMode = 0;
        curvature1Params.detailNormals = detailNormals ? &*detailNormals : nullptr;
        curvature1Params.radius = value<float>(bag, "Detail.Curvature1.SamplingRadius", 0.001f) * distanceScale;
        job.kind = BakeJobKind::Curvature1;
        job.params = &curvature1Params;
        break;
    }

    BakeResult result;
    runDetailBake(job, result);
    if (result.errorCode != ErrorCode::NoError) {
        releaseBackends();
        throw std::runtime_error(errorMessage(result.errorCode).toStdString());
    }
    if (context.isCancelled()) {
        releaseBackends();
        return result.surface;
    }

    const auto postStart = Clock::now();
    std::optional<Core::ConsoleProgressScope> postStage(std::in_place, QStringLiteral("Post-processing"));
    Surfaces::SurfaceSPtr surface = result.surface;
    const auto dilate = [&] {
        postProcess(surface, uint32_t(std::max(dilationWidth, 0)), applyDiffusion);
        postStage->setValue(0.5);
    };
    const auto toTangentSpace = [&] {
        TangentSpaceSettings settings;
        settings.uvSet = uint32_t(uvSet);
        settings.uvTileU = uvTile.x;
        settings.uvTileV = uvTile.y;
        settings.invertGreen = value<int>(bag, "Detail.NormalCommon.InvertGreen", 1) == 1;
        settings.dilationWidth = dilationWidth;
        settings.applyDiffusion = applyDiffusion;
        surface = convertToTangentSpace(context, *low, surface, settings);
    };
    const auto normalLike = [&] {
        if (value<int>(bag, "Detail.NormalCommon.ResultType", 1) == 0)
            dilate();
        else
            toTangentSpace();
    };

    switch (m_kind) {
    case Height: {
        dilate();
        surface = toGray(surface);
        const int normalization = value<int>(bag, "Detail.Distance.MaximizeRange", 1);
        if (normalization == 3) {
            scaleValues(*surface, 1.0f / value<float>(bag, "Detail.Distance.Divisor", 1.0f));
        } else if (lowAsHigh) {
            const float inf = std::numeric_limits<float>::infinity();
            remapValues(*surface, -inf, inf, true);
        } else if (normalization == 0) {
            remapValues(*surface, -job.maxDepth, job.maxHeight, true);
        } else if (normalization == 1) {
            remapValues(*surface, result.rangeMin, result.rangeMax, true);
        } else if (normalization == 2) {
            remapValues(*surface, result.rangeMin, result.rangeMax, false);
        }
        break;
    }
    case Normal:
    case BentNormals:
        normalLike();
        break;
    case Color:
    case Position:
        dilate();
        break;
    case AmbientOcclusion:
        dilate();
        surface = toGray(surface);
        break;
    case Mask:
        surface = toGray(surface);
        break;
    case Thickness: {
        dilate();
        surface = toGray(surface);
        const int normalization = value<int>(bag, "Detail.Distance.MaximizeRange", 1);
        if (normalization == 0)
            remapValues(*surface, minDistance, maxDistance, true);
        else if (normalization == 1)
            remapValues(*surface, result.rangeMin, result.rangeMax, false);
        break;
    }
    case Texture:
        if (textureIsNormalMap)
            toTangentSpace();
        else
            dilate();
        break;
    case Curvature:
        dilate();
        surface = toGray(surface);
        if (value<bool>(bag, "Detail.Curvature.SoftSaturate", true)) {
            if (value<bool>(bag, "Detail.Curvature.MaximizeRange", true))
                remapValues(*surface, result.rangeMin, result.rangeMax, true);
            else
                remapValues(*surface, -1.0f, 1.0f, true);
        }
        break;
    case Curvature1: {
        dilate();
        surface = toGray(surface);
        Core::LogChannel(QStringLiteral("Metadata"))
            .info(QStringLiteral("Curvature UV tile min/max : ") + QString::number(result.rangeMin) + QStringLiteral(", ")
                  + QString::number(result.rangeMax));
        float lo = result.rangeMin < -1.0f ? result.rangeMin : -1.0f;
        float hi = result.rangeMax > 1.0f ? result.rangeMax : 1.0f;
        if (!value<bool>(bag, "Detail.Curvature1.AutoMinMax", true)) {
            lo = value<float>(bag, "Detail.Curvature1.TonemappingMin", -1.0f);
            hi = value<float>(bag, "Detail.Curvature1.TonemappingMax", 1.0f);
        }
        logTonemapValues(*surface, lo, hi, 0.05f);
        remapValues(*surface, -1.0f, 1.0f, true);
        break;
    }
    }

    postStage.reset();
    const double postSeconds = std::chrono::duration<double>(Clock::now() - postStart).count();
    Core::LogChannel().info(QStringLiteral(" Baker: ") + label() + QStringLiteral(" | Engine: ")
                            + backendName(result.backend) + QStringLiteral(" | Init: ")
                            + QString::number(result.initSeconds) + QStringLiteral("s | Compute: ")
                            + QString::number(result.computeSeconds) + QStringLiteral("s | Postprocess: ")
                            + QString::number(postSeconds) + QStringLiteral("s"));
    return surface;
}

} // namespace Ond::Baking
