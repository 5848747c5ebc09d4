#include <gtest/gtest.h>
#include <sys/resource.h>

#include "platform/Wirelink.h"

namespace onvif_client {
namespace {

TEST(Sockets, ThatAreNotThereAreTheReason) {
    WIRELINK_Initial(1, 1, nullptr, 0);
    rlimit usual = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    rlimit none = usual;
    none.rlim_cur = 0;
    char reply[8];
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const int received =
        WIRELINK_SimpleClientComm("127.0.0.1", 9, "x", 1, reply, sizeof reply, nullptr, 100);
    const std::uint32_t exchange = WIRELINK_GetLastError();
    const std::uint32_t handle = WIRELINK_AddConnect(0, "127.0.0.1", 9);
    const std::uint32_t connection = WIRELINK_GetLastError();
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_EQ(received, -1);
    EXPECT_EQ(exchange, kWirelinkNoSocket);
    EXPECT_EQ(handle, 0U);
    EXPECT_EQ(connection, kWirelinkNoSocket);
    WIRELINK_SimpleClientComm("127.0.0.1", 9, "x", 1, reply, sizeof reply, nullptr, 100);
    EXPECT_NE(WIRELINK_GetLastError(), kWirelinkNoSocket) << "it was long ago";
    WIRELINK_Quit();
}

}  // namespace
}  // namespace onvif_client
