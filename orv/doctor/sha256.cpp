#include "orv/doctor/sha256.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "orv/scan/device_text.h"

namespace orv::doctor {

namespace {

using State = std::array<std::uint32_t, 8>;

constexpr std::size_t BlockBytes = 64;
constexpr int Rounds = 64;

// Returns the first 32 bits of the fractional parts of the roots of the first `Count` primes.
template <std::size_t Count>
std::array<std::uint32_t, Count> FractionsOfPrimes(long double (*root)(long double)) {
    std::array<std::uint32_t, Count> fractions{};
    std::size_t found = 0;
    for (std::uint32_t number = 2; found < Count; ++number) {
        bool isPrime = true;
        for (std::uint32_t divisor = 2; divisor * divisor <= number; ++divisor) {
            isPrime = isPrime && number % divisor != 0;
        }
        if (isPrime) {
            const long double value = root(number);
            fractions[found++] =
                static_cast<std::uint32_t>(std::ldexp(value - std::floor(value), 32));
        }
    }
    return fractions;
}

std::uint32_t BigEndian(std::string_view bytes) {
    std::uint32_t word = 0;
    for (const char byte : bytes.substr(0, 4)) {
        word = word << 8 | static_cast<unsigned char>(byte);
    }
    return word;
}

void AddBlock(State& state, std::string_view block) {
    static const auto Constants = FractionsOfPrimes<Rounds>(std::cbrt);
    std::array<std::uint32_t, Rounds> words{};
    for (std::size_t i = 0; i < Rounds; ++i) {
        if (i < 16) {
            words[i] = BigEndian(block.substr(4 * i));
            continue;
        }
        const std::uint32_t before = words[i - 15];
        const std::uint32_t after = words[i - 2];
        words[i] = words[i - 16] + words[i - 7] +
                   (std::rotr(before, 7) ^ std::rotr(before, 18) ^ before >> 3) +
                   (std::rotr(after, 17) ^ std::rotr(after, 19) ^ after >> 10);
    }
    State work = state;
    for (std::size_t i = 0; i < Rounds; ++i) {
        auto& [a, b, c, d, e, f, g, h] = work;
        const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                    ((e & f) ^ (~e & g)) + Constants[i] + words[i];
        const std::uint32_t second =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        work = {first + second, a, b, c, d + first, e, f, g};
    }
    for (std::size_t i = 0; i < state.size(); ++i) {
        state[i] += work[i];
    }
}

}  // namespace

std::string Sha256(std::string_view bytes) {
    State state = FractionsOfPrimes<8>(std::sqrt);
    std::string_view rest = bytes;
    for (; rest.size() >= BlockBytes; rest.remove_prefix(BlockBytes)) {
        AddBlock(state, rest);
    }
    std::string end(rest);
    end += '\x80';
    end.resize(end.size() + (2 * BlockBytes - 8 - end.size() % BlockBytes) % BlockBytes);
    for (int shift = 56; shift >= 0; shift -= 8) {
        end += static_cast<char>(std::uint64_t{bytes.size()} * 8 >> shift & 0xFF);
    }
    for (rest = end; !rest.empty(); rest.remove_prefix(BlockBytes)) {
        AddBlock(state, rest);
    }
    std::string hash;
    for (const std::uint32_t word : state) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            hash += static_cast<char>(word >> shift & 0xFF);
        }
    }
    return HexText(hash);
}

}  // namespace orv::doctor
