// ZETProtectData: what one process encrypts, any process of the machine decrypts; anything
// else gives an empty buffer.
#include <random>

#include "support/TestRegistry.h"
#include "zetsettings/components/ZETProtectData.h"
#include "zetsettings/components/tests/ProcessSignals.h"
#include "zetsettings/serial/tests/SerialTestBytes.h"

namespace {

using zetserialtest::bufferOf;
using zettest::SignalDirectory;

ZETBuf randomBytes(std::size_t size, unsigned seed)
{
    std::mt19937 generator(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(generator() & 0xff);
    return ZETBuf(bytes.data(), bytes.size());
}

ZETBuf encrypt(const ZETBuf& data, const ZETBuf& extra = ZETBuf(""))
{
    return ZETProtectData().encryptData(data, extra);
}

ZETBuf decrypt(const ZETBuf& blob, const ZETBuf& extra = ZETBuf(""))
{
    return ZETProtectData().decryptData(blob, extra);
}

class ZETProtectDataTest : public zettest::RegistryTest {};

TEST_F(ZETProtectDataTest, BytesOfAnySizeComeBackAndNoTwoBlobsAreAlike)
{
    for (std::size_t size : {0u, 1u, 16u, 17u, 65537u}) {
        const ZETBuf data = randomBytes(size, static_cast<unsigned>(size));
        const ZETBuf blob = encrypt(data);
        ASSERT_FALSE(blob.isEmpty()) << size;
        EXPECT_EQ(data, decrypt(blob)) << size;
        EXPECT_NE(blob, encrypt(data)) << size;
        EXPECT_TRUE(size < 16 || blob.bytes().find(data.bytes()) == std::string::npos) << "plaintext shows in the blob";
    }
}

TEST_F(ZETProtectDataTest, AChangedOrCutBlobOrOneWithOtherExtraGivesNothing)
{
    const ZETBuf data("network key 0123456789");
    const std::string blob = encrypt(data, ZETBuf("extra")).bytes();
    ASSERT_GT(blob.size(), 16u);
    // The tail is the integrity check on every platform; each changed bit there must show.
    for (std::size_t back = 1; back <= 16; ++back) {
        std::string changed = blob;
        changed[blob.size() - back] ^= 0x01;
        EXPECT_TRUE(decrypt(bufferOf(changed), ZETBuf("extra")).isEmpty()) << "byte " << back << " from the end";
    }
    EXPECT_TRUE(decrypt(bufferOf(blob.substr(0, blob.size() - 1)), ZETBuf("extra")).isEmpty());
    EXPECT_TRUE(decrypt(bufferOf(blob.substr(0, blob.size() / 2)), ZETBuf("extra")).isEmpty());
    EXPECT_TRUE(decrypt(bufferOf(blob), ZETBuf("other")).isEmpty());
    EXPECT_TRUE(decrypt(bufferOf(blob)).isEmpty());
    EXPECT_EQ(data, decrypt(bufferOf(blob), ZETBuf("extra")));

    EXPECT_TRUE(decrypt(randomBytes(64, 7)).isEmpty());
    EXPECT_TRUE(decrypt(ZETBuf("")).isEmpty());
}

// args: signal directory, name of the file with the data; writes the blob to "blob".
ZET_CHILD_SCENARIO(protectdata_encrypt)
{
    SignalDirectory signals(args.at(0));
    const ZETBuf blob = encrypt(bufferOf(signals.read(args.at(1))));
    if (blob.isEmpty())
        return 2;
    signals.write("blob", blob.bytes());
    return 0;
}

TEST_F(ZETProtectDataTest, ThisProcessDecryptsWhatAnotherEncrypted)
{
    SignalDirectory signals;
    const ZETBuf data = randomBytes(300, 12);
    signals.write("data", data.bytes());
    ASSERT_EQ(0, zettest::runChild("protectdata_encrypt", {signals.path(), "data"}));
    EXPECT_EQ(data, decrypt(bufferOf(signals.read("blob"))));
}

}  // namespace
