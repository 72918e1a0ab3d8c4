#include "RayEngineTestUtil.h"

#include "baking/detail/BackendRunner.h"
#include "baking/detail/RaytracerEmbree.h"

#include <gtest/gtest.h>

using namespace RayEngineTest;

namespace {

DetailBakeJob job(BakeJobKind kind, bool useGpu = true, bool forceDxr = false, bool forceOptix = false)
{
    DetailBakeJob j;
    j.kind = kind;
    j.useGpu = useGpu;
    j.forceDxr = forceDxr;
    j.forceOptix = forceOptix;
    return j;
}

const auto fullSupport = [] { return true; };
const auto partialSupport = [] { return false; };

class BackendRunnerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        collector = std::make_shared<LogCollector>();
        Ond::Core::LogManager::instance().addDelegate(collector);
    }
    void TearDown() override
    {
        Ond::Core::LogManager::instance().removeDelegate(collector);
        setRasterizerGLFactory(nullptr);
        releaseBackends();
    }
    std::shared_ptr<LogCollector> collector;
};

} // namespace

TEST(BackendChoiceTest, OnlyFourKindsAreGpuEligible)
{
    std::vector<int> eligible;
    for (int k = 0; k < BakeJobKindCount; ++k)
        if (isGpuEligible(BakeJobKind(k)))
            eligible.push_back(k);
    EXPECT_EQ(eligible, (std::vector<int>{5, 6, 8, 13}));
}

TEST(BackendChoiceTest, ChoiceRules)
{
    const auto ao = BakeJobKind::AmbientOcclusion;
    EXPECT_EQ(chooseBackend(job(ao), true, true, fullSupport), RayBackend::DXR);
    EXPECT_EQ(chooseBackend(job(ao), true, true, partialSupport), RayBackend::Optix);
    EXPECT_EQ(chooseBackend(job(ao), true, false, partialSupport), RayBackend::Embree);
    // Forcing DXR skips only the partial-support test.
    EXPECT_EQ(chooseBackend(job(ao, true, true), true, false, partialSupport), RayBackend::DXR);
    EXPECT_EQ(chooseBackend(job(ao, true, true), false, true, fullSupport), RayBackend::Optix);
    EXPECT_EQ(chooseBackend(job(ao, true, true), false, false, fullSupport), RayBackend::Embree);
    // Forcing OptiX passes DXR over, and falls to Embree without OptiX.
    EXPECT_EQ(chooseBackend(job(ao, true, false, true), true, true, fullSupport), RayBackend::Optix);
    EXPECT_EQ(chooseBackend(job(ao, true, false, true), true, false, fullSupport), RayBackend::Embree);
    // GPU off, or a kind outside the four, always runs on Embree.
    EXPECT_EQ(chooseBackend(job(ao, false, true), true, true, fullSupport), RayBackend::Embree);
    EXPECT_EQ(chooseBackend(job(BakeJobKind::Height, true, true), true, true, fullSupport), RayBackend::Embree);
    EXPECT_EQ(chooseBackend(job(BakeJobKind::Normal, true, false, true), true, true, fullSupport),
              RayBackend::Embree);
    // The partial-support test is not asked when forced or not needed.
    int asked = 0;
    auto counting = [&asked] { ++asked; return true; };
    chooseBackend(job(ao, true, true), true, true, counting);
    chooseBackend(job(BakeJobKind::Height), true, true, counting);
    EXPECT_EQ(asked, 0);
}

TEST(BackendChoiceTest, EnvironmentSwitchesGpuBackendsOff)
{
    qputenv("OND_NO_DXR", "");
    qputenv("OND_NO_OPTIX", "0");
    resetBackendAvailability();
    EXPECT_EQ(dxrAvailabilityState(), 0);
    EXPECT_FALSE(isDxrAvailable());
    EXPECT_FALSE(isOptixAvailable());
    EXPECT_EQ(dxrAvailabilityState(), 1);
    EXPECT_EQ(optixAvailabilityState(), 1);
    qunsetenv("OND_NO_DXR");
    qunsetenv("OND_NO_OPTIX");
    // The latch keeps its answer for the process.
    EXPECT_EQ(dxrAvailabilityState(), 1);
    resetBackendAvailability();
    // Neither exists on this platform.
    EXPECT_FALSE(isDxrAvailable());
    EXPECT_FALSE(isOptixAvailable());
}

TEST(BackendChoiceTest, NamesAndMessages)
{
    EXPECT_EQ(backendName(0), "Embree");
    EXPECT_EQ(backendName(1), "Optix");
    EXPECT_EQ(backendName(2), "DXR");
    EXPECT_EQ(backendName(3), "Unknown backend");
    EXPECT_EQ(backendName(-1), "Unknown backend");
    EXPECT_EQ(errorMessage(ErrorCode(0)), "No error");
    EXPECT_EQ(errorMessage(ErrorCode(1)), "Out of RAM. High poly mesh may be too large to be baked.");
    EXPECT_EQ(errorMessage(ErrorCode(2)),
              "High poly mesh didn't fit in GPU memory. To try again, disable the GPU raytracing option.");
    EXPECT_EQ(errorMessage(ErrorCode(3)), "Missing input data. Check the logs for more information.");
    EXPECT_TRUE(errorMessage(ErrorCode(4)).startsWith("Internal error. Please send a bug report to "));
    EXPECT_EQ(errorMessage(ErrorCode(5)), "Unknown error");
}

TEST(BackendChoiceTest, TilingFollowsSizeAndSubSamples)
{
    DetailBakeJob j;
    j.width = j.height = 4096;
    j.subSamples = 4;
    BakeTiling t = computeTiling(j);
    EXPECT_EQ(t.tileWidth, 512u);
    EXPECT_EQ(t.rasterTilesX, 32u);
    EXPECT_EQ(t.outputBlockWidth, 512u);
    EXPECT_EQ(t.outputBlocksX, 8u);
    j.width = 256;
    j.height = 128;
    j.subSamples = 2;
    t = computeTiling(j);
    EXPECT_EQ(t.tileWidth, 256u);
    EXPECT_EQ(t.tileHeight, 128u);
    EXPECT_EQ(t.rasterTilesX, 2u);
    EXPECT_EQ(t.rasterTilesY, 2u);
    EXPECT_EQ(t.outputBlocksX, 1u);
    EXPECT_EQ(t.outputBlocksY, 1u);
}

TEST(TileProgressTrackerTest, BlockGoesOutWhenItsLastTileIsDone)
{
    DetailBakeJob j;
    j.width = j.height = 1024;
    j.subSamples = 2;
    const BakeTiling t = computeTiling(j);  // 4 x 4 tiles in 2 x 2 blocks
    Ond::Surfaces::SurfaceSPtr surface(new Ond::Surfaces::Surface(
        Ond::Surfaces::SurfaceDesc(1024, 1024, Ond::Surfaces::PixelFormat::RGBA32F)));
    fill(*surface, Eigen::Vector4f(0, 0, 0, 0));
    surface->pixel<float>(512, 0)[0] = 42.0f;
    RecordingContext context;
    TileProgressTracker tracker;
    tracker.reset(t, surface, &context);
    tracker.tileDone(2, 0);
    tracker.tileDone(3, 0);
    tracker.tileDone(2, 1);
    EXPECT_TRUE(context.outputs.empty());
    tracker.tileDone(3, 1);
    ASSERT_EQ(context.outputs.size(), 1u);
    // Block (1, 0) of 2 x 2, counted from the bottom.
    EXPECT_EQ(context.outputs[0].x, 1);
    EXPECT_EQ(context.outputs[0].y, 1);
    EXPECT_EQ(context.outputs[0].width, 512u);
    EXPECT_FLOAT_EQ(context.outputs[0].firstRed, 42.0f);
    ASSERT_EQ(context.progress.size(), 1u);
    EXPECT_DOUBLE_EQ(context.progress[0], 0.25);
}

TEST(MinMaxPairTest, ReductionStartsAtMaxFloatAndZero)
{
    MinMaxPair total;
    EXPECT_EQ(total.min, 3.4028235e+38f);
    EXPECT_EQ(total.max, 0.0f);
    MinMaxPair a, b;
    a.add(-2.0f);
    a.add(-1.0f);
    b.add(3.0f);
    MinMaxPair::reduce(total, a);
    EXPECT_EQ(total.max, 0.0f);  // only negative values: the maximum stays 0
    MinMaxPair::reduce(total, b);
    EXPECT_EQ(total.min, -2.0f);
    EXPECT_EQ(total.max, 3.0f);
}

TEST_F(BackendRunnerTest, EmbreeBakeLogsItsStartAndFillsTheResult)
{
    ScopedKernel kernel(BakeJobKind::Thickness, &makeStripJob<DistanceKernel>);
    auto* raster = new GridRasterizer;
    raster->z = 0.5f;
    setRasterizerGLFactory([raster] { return std::unique_ptr<RasterizerBase>(raster); });
    RecordingContext context;
    DetailBakeJob j = job(BakeJobKind::Thickness, true, true);
    j.name = "Thickness from mesh";
    j.context = &context;
    j.highScene = sceneOf({plate("p", 0.0f, 100.0f)});
    j.width = j.height = 32;
    j.maxHeight = j.maxDepth = 1.0f;
    BakeResult result;
    runDetailBake(j, result);
    EXPECT_EQ(result.errorCode, ErrorCode::NoError);
    EXPECT_EQ(result.backend, 0);
    ASSERT_TRUE(result.surface);
    EXPECT_EQ(result.surface->format(), Ond::Surfaces::PixelFormat::RGBA32F);
    EXPECT_NEAR(result.surface->pixel<float>(31, 31)[0], 1.5f, 1e-5f);
    EXPECT_NEAR(result.rangeMin, 1.5f, 1e-5f);
    EXPECT_GE(result.initSeconds, 0.0);
    EXPECT_GT(result.computeSeconds, 0.0);
    EXPECT_TRUE(collector->lines.contains("0|Bake started using CPU backend (Embree).")) << qPrintable(
        collector->lines.join('\n'));
    EXPECT_EQ(context.progressNames, QStringList{"Thickness from mesh"});
    EXPECT_EQ(context.progressEnds, 1);
    EXPECT_TRUE(hasEmbreeBackend());
    releaseBackends();
    EXPECT_FALSE(hasEmbreeBackend());
}

TEST_F(BackendRunnerTest, BackendFailureLandsInTheResult)
{
    ScopedKernel kernel(BakeJobKind::Normal, &makeStripJob<DirectionKernel>);
    setRasterizerGLFactory([] { return std::unique_ptr<RasterizerBase>(new GridRasterizer); });
    RecordingContext context;
    DetailBakeJob j = job(BakeJobKind::Normal);
    j.context = &context;
    j.highScene = sceneOf({plate("bare_high", 0.0f, 1.0f, false, false)});
    j.width = j.height = 16;
    BakeResult result;
    runDetailBake(j, result);
    EXPECT_EQ(result.errorCode, ErrorCode::MissingInputData);
    EXPECT_TRUE(collector->lines.contains("1|Could not find normals in mesh : bare_high"))
        << qPrintable(collector->lines.join('\n'));
    // The progress scope never opened: init failed.
    EXPECT_TRUE(context.progressNames.isEmpty());
}
