// SHA-1 as FIPS 180-4 gives it: 512-bit blocks, big-endian words, the
// message padded with one bit, zeros and its length in bits.
#include "Sha1.h"

#include "BigEndian.h"

namespace sim {

namespace {
uint32_t Rotate(uint32_t aValue, int aBits) {
    return aValue << aBits | aValue >> (32 - aBits);
}

void Block(const uint8_t* aBlock, uint32_t aHash[5]) {
    uint32_t w[80];
    for (int i = 0; i < 16; ++i)
        w[i] = uint32_t{aBlock[4 * i]} << 24 | uint32_t{aBlock[4 * i + 1]} << 16 |
               uint32_t{aBlock[4 * i + 2]} << 8 | aBlock[4 * i + 3];
    for (int i = 16; i < 80; ++i)
        w[i] = Rotate(w[i - 3] ^ w[i - 8] ^ w[i - 14] ^ w[i - 16], 1);
    uint32_t a = aHash[0], b = aHash[1], c = aHash[2], d = aHash[3], e = aHash[4];
    for (int i = 0; i < 80; ++i) {
        uint32_t f, k;
        if (i < 20) {
            f = (b & c) | (~b & d);
            k = 0x5A827999;
        } else if (i < 40) {
            f = b ^ c ^ d;
            k = 0x6ED9EBA1;
        } else if (i < 60) {
            f = (b & c) | (b & d) | (c & d);
            k = 0x8F1BBCDC;
        } else {
            f = b ^ c ^ d;
            k = 0xCA62C1D6;
        }
        const uint32_t next = Rotate(a, 5) + f + e + k + w[i];
        e = d;
        d = c;
        c = Rotate(b, 30);
        b = a;
        a = next;
    }
    aHash[0] += a;
    aHash[1] += b;
    aHash[2] += c;
    aHash[3] += d;
    aHash[4] += e;
}
} // namespace

std::array<uint8_t, 20> Sha1(const std::vector<uint8_t>& aData) {
    uint32_t hash[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    std::vector<uint8_t> message(aData);
    message.push_back(0x80);
    while (message.size() % 64 != 56)
        message.push_back(0);
    message.resize(message.size() + 8);
    StoreBigEndian(&message[message.size() - 8], uint64_t{aData.size()} * 8, 8);
    for (size_t at = 0; at < message.size(); at += 64)
        Block(&message[at], hash);
    std::array<uint8_t, 20> digest;
    for (int i = 0; i < 5; ++i)
        StoreBigEndian(&digest[4 * i], hash[i], 4);
    return digest;
}

} // namespace sim
