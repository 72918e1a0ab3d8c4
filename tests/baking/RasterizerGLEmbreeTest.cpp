// The OpenGL seeds feeding the Embree backend through the backend runner:
// box_low traced against itself covers exactly its UV islands.

#include "LowPolyBakeTestUtil.h"
#include "RayEngineTestUtil.h"

#include "baking/detail/BackendRunner.h"
#include "image/DefaultCodecs.h"
#include "image/FileTextureLoader.h"

#include <iostream>

using Ond::Baking::BakeJobKind;
using Ond::Baking::BakeResult;
using Ond::Baking::DetailBakeJob;
using Ond::Baking::ErrorCode;
using Ond::Surfaces::SurfaceSPtr;

TEST(RasterizerGLEmbree, BoxLowAgainstItselfCoversTheReferenceMask)
{
    Ond::Surfaces::registerDefaultCodecs();
    const SurfaceSPtr mask =
        Ond::Surfaces::FileTextureLoader::load(ZmfTest::testDataDir() + QStringLiteral("/box_1024_mask.png"));
    ASSERT_TRUE(mask);
    const auto low = LowPolyTest::loadBoxLow();
    ASSERT_TRUE(low);

    RayEngineTest::ScopedKernel kernel(BakeJobKind::Mask,
                                       &Ond::Baking::makeStripJob<RayEngineTest::CoverageKernel>);
    RayEngineTest::RecordingContext context;
    DetailBakeJob job;
    job.name = QStringLiteral("Mask from mesh");
    job.useGpu = false;
    job.context = &context;
    job.lowScene = low;
    job.highScene = low;
    job.width = 1024;
    job.height = 1024;
    job.maxHeight = 0.01f;
    job.maxDepth = 0.01f;
    job.kind = BakeJobKind::Mask;
    BakeResult result;
    LowPolyTest::inGL([&] {
        Ond::Baking::setRasterizerGLFactory(nullptr);
        Ond::Baking::runDetailBake(job, result);
        Ond::Baking::releaseBackends();
    });
    ASSERT_EQ(result.errorCode, ErrorCode::NoError);
    ASSERT_TRUE(result.surface);

    int inside = 0, disagree = 0;
    for (int y = 0; y < 1024; ++y)
        for (int x = 0; x < 1024; ++x) {
            const bool inMask = LowPolyTest::texel(*mask, x, y).x() > 0.5f;
            const bool hit = LowPolyTest::texel(*result.surface, x, y).x() > 0.5f;
            inside += inMask;
            disagree += inMask != hit;
        }
    std::cout << "[ figures  ] " << inside << " texels in the mask, " << disagree << " disagree" << std::endl;
    EXPECT_GT(inside, 500000);
    EXPECT_LT(disagree, 64);
    // One output block of 512 texels at a time, all four reported.
    EXPECT_EQ(context.outputs.size(), 4u);
}
