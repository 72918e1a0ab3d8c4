#include "scene/graph/MurmurHash3.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

using Ond::SceneGraph::murmurHash3_x86_32;

namespace {

uint32_t hashText(const char* text, uint32_t seed)
{
    return murmurHash3_x86_32(text, std::strlen(text), seed);
}

uint32_t hashBytes(std::vector<unsigned char> bytes, uint32_t seed)
{
    return murmurHash3_x86_32(bytes.data(), bytes.size(), seed);
}

} // namespace

// Published vectors of the x86 32-bit variant: every tail length, seeds that
// reach the final mix alone, and bytes above 0x7f (sign extension faults).
TEST(MurmurHash3, PublishedVectors)
{
    EXPECT_EQ(hashBytes({}, 0), 0u);
    EXPECT_EQ(hashBytes({}, 1), 0x514E28B7u);
    EXPECT_EQ(hashBytes({}, 0xffffffffu), 0x81F16F39u);
    EXPECT_EQ(hashBytes({0xff, 0xff, 0xff, 0xff}, 0), 0x76293B50u);
    EXPECT_EQ(hashBytes({0x21, 0x43, 0x65, 0x87}, 0), 0xF55B516Bu);
    EXPECT_EQ(hashBytes({0x21, 0x43, 0x65, 0x87}, 0x5082EDEEu), 0x2362F9DEu);
    EXPECT_EQ(hashBytes({0x21, 0x43, 0x65}, 0), 0x7E4A8634u);
    EXPECT_EQ(hashBytes({0x21, 0x43}, 0), 0xA0F7B07Au);
    EXPECT_EQ(hashBytes({0x21}, 0), 0x72661CF4u);
    EXPECT_EQ(hashBytes({0, 0, 0, 0}, 0), 0x2362F9DEu);
    EXPECT_EQ(hashBytes({0, 0, 0}, 0), 0x85F0B427u);
    EXPECT_EQ(hashBytes({0, 0}, 0), 0x30F4C306u);
    EXPECT_EQ(hashBytes({0}, 0), 0x514E28B7u);

    EXPECT_EQ(hashText("aaaa", 0x9747b28cu), 0x5A97808Au);
    EXPECT_EQ(hashText("aaa", 0x9747b28cu), 0x283E0130u);
    EXPECT_EQ(hashText("aa", 0x9747b28cu), 0x5D211726u);
    EXPECT_EQ(hashText("a", 0x9747b28cu), 0x7FA09EA6u);
    EXPECT_EQ(hashText("abcd", 0x9747b28cu), 0xF0478627u);
    EXPECT_EQ(hashText("abc", 0x9747b28cu), 0xC84A62DDu);
    EXPECT_EQ(hashText("ab", 0x9747b28cu), 0x74875592u);
    EXPECT_EQ(hashText("Hello, world!", 0x9747b28cu), 0x24884CBAu);
    EXPECT_EQ(hashText("The quick brown fox jumps over the lazy dog", 0x9747b28cu), 0x2FA826CDu);
    EXPECT_EQ(hashText("The quick brown fox jumps over the lazy dog", 0), 0x2E4FF723u);
}

// Unaligned input must hash like the same bytes aligned.
TEST(MurmurHash3, UnalignedInput)
{
    const char text[] = "xThe quick brown fox jumps over the lazy dog";
    EXPECT_EQ(murmurHash3_x86_32(text + 1, sizeof(text) - 2, 0), 0x2E4FF723u);
}

// Fed in pieces of every size, the hash equals the one-shot hash: pieces
// that end mid-block must carry their bytes over.
TEST(MurmurHash3, PiecewiseEqualsWhole)
{
    std::vector<unsigned char> bytes(257);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(i * 37 + 11);
    for (size_t length : {0u, 1u, 3u, 4u, 5u, 64u, 257u}) {
        const uint32_t whole = murmurHash3_x86_32(bytes.data(), length, 0x1234);
        for (size_t piece = 1; piece <= 9; ++piece) {
            Ond::SceneGraph::MurmurHash3x86_32 hash(0x1234);
            for (size_t at = 0; at < length; at += piece)
                hash.update(bytes.data() + at, std::min(piece, length - at));
            EXPECT_EQ(hash.finish(), whole) << "length " << length << " piece " << piece;
        }
    }
}
