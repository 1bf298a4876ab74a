// Registers over the in-memory port: lengths, signs, byte orders, bit
// fields, structs, raw spans, the three cache modes and the transfers they
// cause.
#include <gtest/gtest.h>

#include "Fixture.h"
#include "gik/IntRegNode.h"
#include "gik/MaskedIntNode.h"
#include "gik/MemoryNode.h"

using namespace gik;

namespace {

class Registers : public test::KernelTest {};

std::string IntReg(const char* aName, const char* aAddress, int aLength, const char* aExtra = "") {
    return std::string("<IntReg Name=\"") + aName + "\"><Address>" + aAddress +
           "</Address><Length>" + std::to_string(aLength) +
           "</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + aExtra + "</IntReg>";
}

} // namespace

TEST_F(Registers, BigAndLittleEndianUnsignedAndSigned) {
    ASSERT_EQ(
        Load(IntReg("B4", "0x00", 4) +
                 IntReg("L4", "0x10", 4, "<Endianess>LittleEndian</Endianess>") +
                 IntReg("S4", "0x20", 4, "<Sign>Signed</Sign>") +
                 IntReg("L8", "0x30", 8, "<Endianess>LittleEndian</Endianess><Sign>Signed</Sign>") +
                 IntReg("U8", "0x40", 8),
             "B4 L4 S4 L8 U8"),
        0);
    mPort->PutBig(0x00, 0x12345678, 4);
    mPort->PutLittle(0x10, 0x12345678, 4);
    mPort->PutBig(0x20, 0xFFFFFFFE, 4);
    mPort->PutLittle(0x30, static_cast<llk::u8>(-3), 8);
    mPort->PutBig(0x40, 0xFFFFFFFFFFFFFFFFull, 8);
    EXPECT_EQ(GetInt("B4"), 0x12345678);
    EXPECT_EQ(GetInt("L4"), 0x12345678);
    EXPECT_EQ(GetInt("S4"), -2);
    EXPECT_EQ(GetInt("L8"), -3);
    cValue v;
    ASSERT_EQ(Get("U8", v), 0);
    EXPECT_EQ(v.Flavour(), kFlavourUnsigned);
    EXPECT_EQ(v.Uint(), 0xFFFFFFFFFFFFFFFFull);
    ASSERT_EQ(SetInt("L4", 0x0A0B0C0D), 0);
    EXPECT_EQ(mPort->Byte(0x10), 0x0D);
    ASSERT_EQ(SetInt("S4", -1), 0);
    EXPECT_EQ(mPort->GetBig(0x20, 4), 0xFFFFFFFFu);
}

TEST_F(Registers, RangesByLengthAndSign) {
    ASSERT_EQ(Load(IntReg("U2", "0", 2) + IntReg("S2", "0x10", 2, "<Sign>Signed</Sign>") +
                       IntReg("U4", "0x20", 4) + IntReg("S8", "0x30", 8, "<Sign>Signed</Sign>") +
                       IntReg("U8", "0x40", 8),
                   "U2 S2 U4 S8 U8"),
              0);
    cValue minimum, maximum;
    ASSERT_EQ(Node("S2")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), -32768);
    EXPECT_EQ(maximum.Sint(), 32767);
    ASSERT_EQ(Node("U4")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), 0);
    EXPECT_EQ(maximum.Uint(), 4294967295u);
    ASSERT_EQ(Node("S8")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(minimum.Sint(), INT64_MIN);
    ASSERT_EQ(Node("U8")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(maximum.Flavour(), kFlavourUnsigned);
    EXPECT_EQ(maximum.Uint(), UINT64_MAX);
    EXPECT_EQ(SetInt("U2", 0x10000), 15);
    EXPECT_EQ(SetInt("S2", 40000), 15);
}

TEST_F(Registers, BadLengthsAre104AndRefuseTheNode) {
    EXPECT_EQ(Load(IntReg("One", "0", 1), "One"), 101);
    EXPECT_EQ(Load(IntReg("Three", "0", 3), "Three"), 101);
    EXPECT_EQ(
        Load("<FloatReg "
             "Name=\"F\"><Address>0</Address><Length>2</Length><pPort>Device</pPort></FloatReg>",
             "F"),
        101);
    EXPECT_EQ(
        Load("<IntReg Name=\"NoLen\"><Address>0</Address><pPort>Device</pPort></IntReg>", "NoLen"),
        101);
    EXPECT_EQ(
        Load("<IntReg Name=\"NoPort\"><Address>0</Address><Length>4</Length></IntReg>", "NoPort"),
        101);
    EXPECT_EQ(Load("<StringReg Name=\"Huge\"><Address>0</Address><Length>0xFFFFFFFF</Length>"
                   "<pPort>Device</pPort></StringReg>",
                   "Huge"),
              101);
    EXPECT_EQ(Load("<StringReg Name=\"Neg\"><Address>0</Address><Length>-4</Length>"
                   "<pPort>Device</pPort></StringReg>",
                   "Neg"),
              101);
}

TEST_F(Registers, TwoByteRegistersGoOnIntoTheEightByteBranch) {
    // Kept as it stands: a 2-byte register also reads and writes eight bytes
    // at the same address, and the eight-byte value is the one that counts.
    ASSERT_EQ(Load(IntReg("R", "0x100", 2), "R"), 0);
    mPort->PutBig(0x100, 0x0005, 2);
    mPort->ResetCounts();
    EXPECT_EQ(GetInt("R"), 0x0005000000000000ll);
    ASSERT_EQ(mPort->mLog.size(), 2u);
    EXPECT_EQ(mPort->mLog[0].length, 2u);
    EXPECT_EQ(mPort->mLog[1].length, 8u);
    mPort->ResetCounts();
    ASSERT_EQ(SetInt("R", 7), 0);
    ASSERT_EQ(mPort->mLog.size(), 2u);
    EXPECT_EQ(mPort->mLog[0].length, 2u);
    EXPECT_EQ(mPort->mLog[1].length, 8u);
    EXPECT_EQ(mPort->GetBig(0x100, 8), 7u);
}

TEST_F(Registers, WriteThroughCacheByDefault) {
    ASSERT_EQ(Load("<Integer Name=\"A\"><pValue>R</pValue></Integer>" + IntReg("R", "0", 4), "A"),
              0);
    mPort->PutBig(0, 11, 4);
    EXPECT_EQ(GetInt("A"), 11);
    EXPECT_EQ(GetInt("A"), 11);
    EXPECT_EQ(mPort->mFetches, 1);
    mPort->PutBig(0, 12, 4); // behind the kernel's back
    EXPECT_EQ(GetInt("A"), 11);
    ASSERT_EQ(SetInt("A", 20), 0);
    EXPECT_EQ(GetInt("A"), 20);
    EXPECT_EQ(mPort->mFetches, 1); // the write filled the cache
    EXPECT_EQ(mPort->mStores, 1);
}

TEST_F(Registers, WriteAroundEmptiesTheCache) {
    ASSERT_EQ(Load(IntReg("R", "0", 4, "<Cachable>WriteAround</Cachable>"), "R"), 0);
    ASSERT_EQ(SetInt("R", 20), 0);
    EXPECT_EQ(mPort->mFetches, 0);
    EXPECT_EQ(GetInt("R"), 20);
    EXPECT_EQ(mPort->mFetches, 1);
    EXPECT_EQ(GetInt("R"), 20);
    EXPECT_EQ(mPort->mFetches, 1);
}

TEST_F(Registers, NoCacheReadsTheDeviceEveryTime) {
    ASSERT_EQ(Load(IntReg("R", "0", 4, "<Cachable>NoCache</Cachable>"), "R"), 0);
    ASSERT_EQ(SetInt("R", 3), 0);
    EXPECT_TRUE(static_cast<cIntRegNode*>(Node("R"))->HasCache()); // filled, never read back
    EXPECT_EQ(GetInt("R"), 3);
    EXPECT_EQ(GetInt("R"), 3);
    EXPECT_EQ(mPort->mFetches, 2);
}

TEST_F(Registers, RuntimeWithoutCacheReadsEveryTime) {
    cRuntime* runtime = cRuntime::New(true);
    runtime->AttachPort("Device", mPort);
    ASSERT_EQ(
        runtime->Process(test::Document(IntReg("R", "0", 4), "R").c_str(), false, nullptr, false),
        0);
    ASSERT_EQ(runtime->Finalize(), 0);
    pNode* r = runtime->SeekNode("R", true);
    cValue v;
    ASSERT_EQ(r->GetValue(runtime, v, nullptr), 0);
    ASSERT_EQ(r->GetValue(runtime, v, nullptr), 0);
    EXPECT_EQ(mPort->mFetches, 2);
}

TEST_F(Registers, PortFailuresPassThroughAndKeepTheCache) {
    ASSERT_EQ(Load(IntReg("R", "0", 4, "<Cachable>NoCache</Cachable>"), "R"), 0);
    mPort->PutBig(0, 9, 4);
    EXPECT_EQ(GetInt("R"), 9);
    mPort->mFailFetch = -1011;
    llk::i4 status = 0;
    GetInt("R", &status);
    EXPECT_EQ(status, -1011);
    EXPECT_TRUE(static_cast<cIntRegNode*>(Node("R"))->HasCache());
    mPort->mFailFetch = 0;
    mPort->mFailStore = -1005;
    EXPECT_EQ(SetInt("R", 4), -1005);
    EXPECT_EQ(GetInt("R"), 9);
}

TEST_F(Registers, ReadOnlyPortMakesRegistersUnwriteable) {
    mPort->mWriteable = false;
    ASSERT_EQ(Load("<Integer Name=\"A\"><pValue>R</pValue></Integer>" + IntReg("R", "0", 4), "A"),
              0);
    EXPECT_FALSE(Node("R")->IsWriteable(mRuntime));
    EXPECT_FALSE(Node("A")->IsWriteable(mRuntime));
    EXPECT_EQ(SetInt("A", 1), 106);
    EXPECT_EQ(mPort->mStores, 0);
}

TEST_F(Registers, AddressAndIndex) {
    ASSERT_EQ(
        Load("<Integer Name=\"Sel\"><pValue>SelReg</pValue></Integer>" +
                 IntReg("SelReg", "0x500", 4) +
                 "<IntReg Name=\"R\"><Address>0x1000</Address><pIndex Offset=\"8\">Sel</pIndex>"
                 "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
                 "<Integer Name=\"A\"><pValue>R</pValue></Integer>",
             "Sel A"),
        0);
    mPort->PutBig(0x1000, 100, 4);
    mPort->PutBig(0x1010, 102, 4);
    EXPECT_EQ(GetInt("A"), 100);
    ASSERT_EQ(SetInt("Sel", 2), 0);
    // The index changed: A was poked and its register re-reads.
    EXPECT_EQ(Poked(), "A");
    EXPECT_EQ(GetInt("A"), 102);
    llk::u8 address = 0;
    ASSERT_EQ(static_cast<cIntRegNode*>(Node("R"))->ComputeAddress(mRuntime, address), 0);
    EXPECT_EQ(address, 0x1010u);
}

TEST_F(Registers, AddressesWrapAt64Bits) {
    // Unsigned 8-byte registers give an address and an index near 2^64.
    ASSERT_EQ(Load(IntReg("Base", "0x100", 8) + IntReg("Back", "0x108", 8) +
                       "<Integer Name=\"Sel\"><Value>2</Value></Integer>"
                       "<IntReg Name=\"Up\"><pAddress>Base</pAddress><pIndex "
                       "Offset=\"16\">Sel</pIndex>"
                       "<Length>4</Length><pPort>Device</pPort></IntReg>"
                       "<IntReg Name=\"Down\"><Address>0x20</Address><pIndex "
                       "Offset=\"16\">Back</pIndex>"
                       "<Length>4</Length><pPort>Device</pPort></IntReg>",
                   "Up Down"),
              0);
    mPort->PutBig(0x100, 0xFFFFFFFFFFFFFFF0ull, 8);
    mPort->PutBig(0x108, 0xFFFFFFFFFFFFFFFFull, 8);
    mPort->PutBig(0x10, 77, 4);
    // 2^64 - 16 + 2 x 16 and 32 + (2^64 - 1) x 16 are both 16.
    for (const char* name : {"Up", "Down"}) {
        u8 address = 0;
        ASSERT_EQ(static_cast<cIntRegNode*>(Node(name))->ComputeAddress(mRuntime, address), 0);
        EXPECT_EQ(address, 0x10u) << name;
        EXPECT_EQ(GetInt(name), 77) << name;
    }
}

TEST_F(Registers, AliasesAtOneAddressDropEachOther) {
    ASSERT_EQ(Load("<Integer Name=\"A\"><pValue>R1</pValue></Integer><Integer "
                   "Name=\"B\"><pValue>R2</pValue>"
                   "</Integer>" +
                       IntReg("R1", "0x40", 4) + IntReg("R2", "0x40", 4) +
                       IntReg("Other", "0x44", 4),
                   "A B Other"),
              0);
    EXPECT_EQ(GetInt("A"), 0);
    EXPECT_EQ(GetInt("B"), 0);
    EXPECT_EQ(GetInt("Other"), 0);
    ASSERT_EQ(SetInt("A", 5), 0);
    EXPECT_FALSE(static_cast<cIntRegNode*>(Node("R2"))->HasCache());
    EXPECT_TRUE(static_cast<cIntRegNode*>(Node("Other"))->HasCache());
    EXPECT_EQ(GetInt("B"), 5);
    // B is reached through R2's own walk.
    EXPECT_EQ(Poked(), "B");
}

TEST_F(Registers, MaskedBitNumbering) {
    ASSERT_EQ(
        Load("<MaskedIntReg "
             "Name=\"M\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
             "<pPort>Device</pPort><LSB>15</LSB><MSB>0</MSB><Endianess>BigEndian</Endianess>"
             "</MaskedIntReg>"
             "<MaskedIntReg "
             "Name=\"L\"><Address>0x10</Address><Length>4</Length><AccessMode>RW</AccessMode>"
             "<pPort>Device</pPort><LSB>4</LSB><MSB>7</MSB><Endianess>LittleEndian</Endianess>"
             "<Sign>Signed</Sign></MaskedIntReg>"
             "<MaskedIntReg "
             "Name=\"Bit\"><Address>0x20</Address><Length>4</Length><AccessMode>WO</AccessMode>"
             "<pPort>Device</pPort><Bit>31</Bit></MaskedIntReg>",
             "M L Bit"),
        0);
    auto* m = static_cast<cMaskedIntRegNode*>(Node("M"));
    EXPECT_EQ(m->Field().first, 16u);
    EXPECT_EQ(m->Field().last, 31u);
    EXPECT_EQ(m->Field().count, 16u);
    mPort->PutBig(0, 0xBEEF1234, 4);
    EXPECT_EQ(GetInt("M"), 0xBEEF);
    ASSERT_EQ(SetInt("M", 0xCAFE), 0);
    EXPECT_EQ(mPort->GetBig(0, 4), 0xCAFE1234u);
    // A signed 4-bit field extends by whole bytes: 0xF stays 15.
    mPort->PutLittle(0x10, 0xF0, 4);
    EXPECT_EQ(GetInt("L"), 15);
    // Write-only, yet a masked register is always readable (read-modify-write).
    EXPECT_TRUE(Node("Bit")->CanRead());
    ASSERT_EQ(SetInt("Bit", 1), 0);
    EXPECT_EQ(mPort->GetBig(0x20, 4), 1u); // big-endian bit 31 is the lowest bit
    cValue v;
    ASSERT_EQ(Get("Bit", v), 0);
    EXPECT_EQ(v.Flavour(), kFlavourBool);
    EXPECT_TRUE(v.Bool());
}

namespace {

// A signed little-endian field of register bits 0 to aMsb, as a masked
// register and as a struct entry.
std::string SignedFields(const char* aName, int aMsb, int aAddress) {
    std::string bits = "<LSB>0</LSB><MSB>" + std::to_string(aMsb) + "</MSB><Sign>Signed</Sign>";
    std::string where = "<Address>" + std::to_string(aAddress) +
                        "</Address><Length>4</Length><AccessMode>RW</AccessMode>"
                        "<pPort>Device</pPort><Endianess>LittleEndian</Endianess>";
    return std::string("<MaskedIntReg Name=\"M") + aName + "\">" + where + bits +
           "</MaskedIntReg><StructReg Comment=\"S" + aName + "\">" + where +
           "<StructEntry Name=\"E" + aName + "\">" + bits + "</StructEntry></StructReg>";
}

} // namespace

TEST_F(Registers, SignedFieldsExtendByWholeBytes) {
    ASSERT_EQ(Load(SignedFields("8", 7, 0) + SignedFields("12", 11, 0x10) +
                       SignedFields("16", 15, 0x20) + SignedFields("24", 23, 0x30),
                   "M8 E8 M12 E12 M16 E16 M24 E24"),
              0);
    struct tCase {
        const char* bits;
        llk::u8 address;
        llk::u8 stored;
        llk::i8 read;
    } cases[] = {
        {"8", 0, 0x80, -128},
        {"8", 0, 0xFF, -1},
        // 12 bits take two bytes: they extend from bit 15, so 0xFFF is no -1.
        {"12", 0x10, 0xFFF, 4095},
        {"12", 0x10, 0x800, 2048},
        {"16", 0x20, 0xFFFF, -1},
        {"16", 0x20, 0x8000, -32768},
        // Three bytes are no width to extend from.
        {"24", 0x30, 0xFFFFFF, 0xFFFFFF},
    };
    for (const tCase& c : cases) {
        SCOPED_TRACE(std::string(c.bits) + " bits hold " + std::to_string(c.stored));
        mPort->PutLittle(c.address, c.stored, 4);
        for (const char* kind : {"M", "E"}) {
            std::string name = kind + std::string(c.bits);
            Node(name.c_str())->Invalidate(mRuntime);
            Node(("$S" + std::string(c.bits)).c_str())->Invalidate(mRuntime); // the holder's cache
            EXPECT_EQ(GetInt(name.c_str()), c.read) << name;
        }
    }
}

TEST_F(Registers, AbsurdBitNumbersAre104) {
    const char* bad[] = {"<LSB>32</LSB><MSB>0</MSB>", "<LSB>-1</LSB><MSB>0</MSB>", "<Bit>40</Bit>",
                         "<LSB>x</LSB><MSB>0</MSB>"};
    for (const char* bits : bad) {
        SCOPED_TRACE(bits);
        cRuntime* runtime = cRuntime::New(false);
        std::string nodes =
            std::string("<MaskedIntReg Name=\"M\"><Address>0</Address><Length>4</Length>"
                        "<pPort>Device</pPort><Endianess>LittleEndian</Endianess>") +
            bits + "</MaskedIntReg>";
        EXPECT_EQ(runtime->Process(test::Document(nodes, "M").c_str(), false, nullptr, false), 101);
    }
    // LSB and MSB are both required.
    EXPECT_EQ(
        Load("<MaskedIntReg Name=\"M\"><Address>0</Address><Length>4</Length><pPort>Device</pPort>"
             "<LSB>1</LSB></MaskedIntReg>",
             "M"),
        101);
}

TEST_F(Registers, FloatRegisters) {
    ASSERT_EQ(
        Load("<FloatReg "
             "Name=\"F4\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
             "<pPort>Device</pPort><Endianess>BigEndian</Endianess></FloatReg>"
             "<FloatReg "
             "Name=\"F8\"><Address>0x10</Address><Length>8</Length><AccessMode>RW</AccessMode>"
             "<pPort>Device</pPort><Endianess>LittleEndian</Endianess></FloatReg>",
             "F4 F8"),
        0);
    mPort->PutBig(0, 0x40490FDB, 4); // 3.14159274f
    EXPECT_FLOAT_EQ(static_cast<float>(GetReal("F4")), 3.14159274f);
    ASSERT_EQ(SetReal("F4", 0.1), 0);
    EXPECT_EQ(GetReal("F4"), static_cast<double>(0.1f)); // cached in single precision
    ASSERT_EQ(SetReal("F8", -2.5), 0);
    EXPECT_EQ(mPort->GetLittle(0x10, 8), 0xC004000000000000ull);
    cValue minimum, maximum;
    ASSERT_EQ(Node("F4")->GetRange(mRuntime, minimum, maximum, nullptr), 0);
    EXPECT_EQ(maximum.Real(), 1.7976931348623157e308);
}

TEST_F(Registers, StringRegisters) {
    ASSERT_EQ(Load("<StringReg "
                   "Name=\"S\"><Address>0x80</Address><Length>8</Length><AccessMode>RW</AccessMode>"
                   "<pPort>Device</pPort></StringReg>",
                   "S"),
              0);
    mPort->PutText(0x80, "abcdefgh"); // no terminator in the register
    EXPECT_EQ(GetText("S"), "abcdefgh");
    mPort->PutBig(0x88, 0x41, 1); // past the register: not read
    Node("S")->Invalidate(mRuntime);
    EXPECT_EQ(GetText("S"), "abcdefgh");
    mPort->ResetCounts();
    ASSERT_EQ(SetText("S", "xyz"), 0);
    ASSERT_EQ(mPort->mLog.size(), 1u);
    EXPECT_EQ(mPort->mLog[0].length, 4u); // the text and its terminator only
    EXPECT_EQ(mPort->Byte(0x84), 'e');    // the tail is untouched
    EXPECT_EQ(GetText("S"), "xyz");
    EXPECT_EQ(SetText("S", "1234567"), 0);
    EXPECT_EQ(SetText("S", "12345678"), 9);
    EXPECT_EQ(SetInt("S", 1), 105);
}

TEST_F(Registers, StructEntriesShareTheirHolder) {
    ASSERT_EQ(
        Load("<StructReg Comment=\"Flags\"><Address>0x60</Address><Length>4</Length>"
             "<AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>LittleEndian</Endianess>"
             "<StructEntry Name=\"Low\"><LSB>0</LSB><MSB>7</MSB></StructEntry>"
             "<StructEntry "
             "Name=\"High\"><LSB>8</LSB><MSB>15</MSB><Cachable>NoCache</Cachable></StructEntry>"
             "<StructEntry Name=\"Top\"><Bit>31</Bit></StructEntry>"
             "</StructReg><Integer Name=\"Flags\"><Value>1</Value></Integer>",
             "Low High Top Flags"),
        0);
    pNode* holder = Node("$Flags");
    ASSERT_NE(holder, nullptr);
    EXPECT_EQ(holder->GetPath(), nullptr);
    EXPECT_TRUE(holder->IsNoCache(mRuntime)); // pooled from "High"
    // A node of the same name as the struct's comment is not disturbed.
    EXPECT_EQ(GetInt("Flags"), 1);
    EXPECT_EQ(Node("Low")->ClassType(), 0x10000216u);
    mPort->PutLittle(0x60, 0x80001234, 4);
    EXPECT_EQ(GetInt("Low"), 0x34);
    EXPECT_EQ(GetInt("High"), 0x12);
    EXPECT_EQ(GetInt("Top"), 1);
    ASSERT_EQ(SetInt("Low", 0x56), 0);
    EXPECT_EQ(mPort->GetLittle(0x60, 4), 0x80001256u);
    // The writing entry does not hear its own echo; its siblings do.
    EXPECT_EQ(Poked(), "High Top");
    EXPECT_EQ(SetInt("Low", 0x100), 15);
}

TEST_F(Registers, StructHolderNamesAreUnique) {
    ASSERT_EQ(
        Load("<Integer Name=\"$S\"><Value>1</Value></Integer>"
             "<StructReg Comment=\"S\"><Address>0</Address><Length>4</Length><pPort>Device</pPort>"
             "<StructEntry Name=\"E1\"><Bit>0</Bit></StructEntry></StructReg>",
             "E1"),
        0);
    EXPECT_NE(Node("$S_2"), nullptr);
}

TEST_F(Registers, RawSpans) {
    ASSERT_EQ(
        Load("<Register Name=\"Block\"><Address>0x200</Address><Length>16</Length>"
             "<AccessMode>RW</AccessMode><pPort>Device</pPort></Register>"
             "<Integer Name=\"A\"><pValue>R</pValue></Integer>" +
                 IntReg("R", "0x300", 4) +
                 "<Integer Name=\"BlockUser\"><pValue>BU</pValue><pInvalidator>Block</pInvalidator>"
                 "</Integer>" +
                 IntReg("BU", "0x400", 4),
             "Block A BlockUser"),
        0);
    auto* block = static_cast<cMemoryNode*>(Node("Block"));
    EXPECT_EQ(block->Length(mRuntime), 16u);
    llk::u1 bytes[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    llk::u4 done = 0;
    ASSERT_EQ(block->Store(mRuntime, 16, bytes, done), 0);
    EXPECT_EQ(done, 16u);
    EXPECT_EQ(mPort->Byte(0x20f), 16);
    llk::u1 back[16] = {};
    ASSERT_EQ(block->Fetch(mRuntime, 16, back, done), 0);
    EXPECT_EQ(back[3], 4);
    // Any register write reaches every raw block, whose dependents hear it.
    EXPECT_EQ(GetInt("BlockUser"), 0);
    ASSERT_EQ(SetInt("A", 1), 0);
    EXPECT_EQ(Poked(), "BlockUser");
}
