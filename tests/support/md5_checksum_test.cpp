#include "support/md5_checksum.h"

#include <gtest/gtest.h>

#include <string>

using cvas::CMD5Checksum;

TEST(Md5Checksum, MatchesTheTestSuiteOfRfc1321)
{
    EXPECT_EQ(CMD5Checksum::GetMD5(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(CMD5Checksum::GetMD5("a"), "0cc175b9c0f1b6a831c399e269772661");
    EXPECT_EQ(CMD5Checksum::GetMD5("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(CMD5Checksum::GetMD5("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
    EXPECT_EQ(CMD5Checksum::GetMD5("abcdefghijklmnopqrstuvwxyz"),
              "c3fcd3d76192e4007dfb496cca67e13b");
    EXPECT_EQ(
        CMD5Checksum::GetMD5("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
        "d174ab98d277d9f5a5611c2c9f419d9f");
    EXPECT_EQ(CMD5Checksum::GetMD5("1234567890123456789012345678901234567890"
                                   "1234567890123456789012345678901234567890"),
              "57edf4a22be3c955ac49da2e2107b67a");
}

TEST(Md5Checksum, PiecewiseUpdatesAcrossBlockEdgesEqualOneUpdate)
{
    std::string message;
    for (int i = 0; i < 1000; ++i)
        message.push_back(static_cast<char>(i * 7));
    const std::string whole = CMD5Checksum::GetMD5(message);
    // Lengths around the 56- and 64-byte edges of padding and blocks.
    for (std::size_t cut : {1u, 55u, 56u, 63u, 64u, 65u, 119u, 120u, 999u})
    {
        CMD5Checksum md5;
        md5.Update(message.substr(0, cut));
        md5.Update(message.substr(cut));
        EXPECT_EQ(CMD5Checksum::ToHex(md5.Final()), whole) << "cut at " << cut;
    }
    EXPECT_EQ(CMD5Checksum::GetMD5(std::string(56, 'x')), "668a72d5ba17f08e62dabcafad6db14b");
    EXPECT_EQ(CMD5Checksum::GetMD5(std::string(64, 'x')), "c1bb4f81d892b2d57947682aeb252456");
}
