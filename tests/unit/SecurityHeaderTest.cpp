#include "client/PreparedRequest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <thread>
#include <vector>

#include "commands/DeviceRequests.h"
#include "platform/Digests.h"
#include "support/MovedClock.h"

namespace onvif_client {
namespace {

constexpr const char* kDeviceTime =
    "<GetResponse><dateAndTime><UTCDateTime><time><hour>8</hour><minute>5</minute>"
    "<second>9</second></time><date><year>2019</year><month>3</month><day>7</day></date>"
    "</UTCDateTime></dateAndTime></GetResponse>";

/// The digest as a device computes it: over the decoded nonce, the creation time and the password.
std::string DeviceDigest(const std::vector<std::uint8_t>& nonce, const std::string& behind) {
    std::vector<std::uint8_t> digested = nonce;
    digested.insert(digested.end(), behind.begin(), behind.end());
    return Base64(Sha1(digested).value());
}

std::string Token(CXmlTransform& envelope, const char* element) {
    return std::string(TextAt(envelope.Document().Root(),
                              std::string("s:Header/wsse:Security/wsse:UsernameToken/") + element));
}

TEST(SecurityHeader, CarriesADigestThatADeviceAccepts) {
    const client_test::CMovedClock clock;
    const CScopedClock replaced(clock);
    const std::pair<const char*, const char*> accounts[] = {
        {"admin", "secret"}, {"missing", ""}, {"<wsse:Nonce>missing", "päss&<>"}};
    for (const auto& [user, password] : accounts) {
        for (const bool deviceClock : {false, true}) {
            const Credentials credentials{user, password};
            CXmlTransform envelope(BuildGetDeviceInformation({}));
            if (deviceClock) {
                ASSERT_TRUE(Authentication_UseIPCTime(credentials, envelope, kDeviceTime));
            } else {
                const auto prepared =
                    CPreparedEnvelope::Make(credentials, BuildGetDeviceInformation({}));
                ASSERT_TRUE(
                    envelope.Document().Load(prepared.value().Sign(credentials, {}).value()));
            }
            const auto nonce = DecodeBase64(Token(envelope, "wsse:Nonce")).value();
            EXPECT_EQ(Token(envelope, "wsse:Username"), user);
            EXPECT_EQ(Token(envelope, "wsu:Created"), "2019-03-07T08:05:09Z");
            EXPECT_EQ(nonce.size(), 32U);
            EXPECT_EQ(Token(envelope, "wsse:Password"),
                      DeviceDigest(nonce, std::string("2019-03-07T08:05:09Z") + password));
        }
    }
}

TEST(SecurityHeader, WithoutCredentialsTheTwoVariantsRemoveDifferentParts) {
    CXmlTransform local(BuildGetDeviceInformation({}));
    CXmlTransform device(BuildGetDeviceInformation({}));
    EXPECT_TRUE(FillSecurityHeader({}, local, {}));
    EXPECT_TRUE(Authentication_UseIPCTime({}, device, kDeviceTime));
    EXPECT_EQ(local.Document().Find("s:Header"), nullptr);
    ASSERT_NE(device.Document().Find("s:Header"), nullptr);
    EXPECT_TRUE(device.Document().Find("s:Header")->NoChildren());
}

TEST(SecurityHeader, UnknownDeviceTimeAndMissingElements) {
    CXmlTransform envelope(BuildGetDeviceInformation({}));
    EXPECT_TRUE(Authentication_UseIPCTime({"u", ""}, envelope, ""));
    EXPECT_EQ(Token(envelope, "wsu:Created"), "-00-00T00:00:00Z");
    CXmlTransform bare(BareClockEnvelope());
    EXPECT_FALSE(CPreparedEnvelope::Make({"u", "p"}, BareClockEnvelope()));
    EXPECT_FALSE(Authentication_UseIPCTime({"u", "p"}, bare, kDeviceTime));
}

TEST(SecurityHeader, NoncesNeverComeTwice) {
    const client_test::CMovedClock clock;
    const CScopedClock replaced(clock);
    constexpr std::size_t kEach = 500;
    std::vector<std::vector<std::string>> made(4);
    {
        std::vector<std::jthread> threads;
        for (auto& own : made) {
            threads.emplace_back(
                [&own] { std::generate_n(std::back_inserter(own), kEach, MakeNonceText); });
        }
    }
    std::set<std::string> all;
    for (const auto& own : made) {
        all.insert(own.begin(), own.end());
    }
    EXPECT_EQ(all.size(), made.size() * kEach);
    EXPECT_EQ(all.begin()->find_first_not_of("0123456789abcdef"), std::string::npos);
}

}  // namespace
}  // namespace onvif_client
