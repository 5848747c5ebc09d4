#include "platform/Digests.h"

#include <gtest/gtest.h>

namespace onvif_client {
namespace {

// The vectors of RFC 1321 and RFC 3174.
TEST(Digests, GiveTheStandardsResults) {
    EXPECT_EQ(LowerHex(Md5(Bytes("")).value()), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(LowerHex(Md5(Bytes("message digest")).value()), "f96b697d7cb7938d525a2f31aaf161d0");
    EXPECT_EQ(LowerHex(Sha1(Bytes("abc")).value()), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(LowerHex(Sha1(Bytes("")).value()), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

}  // namespace
}  // namespace onvif_client
