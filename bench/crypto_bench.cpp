// The stream cryptor over 64 MiB on each inner loop, against memcpy of the same buffer, and the
// wide-mask queries.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "pind/crypto/BigInt.h"
#include "pind/crypto/ClientCryptor.h"
#include "crypto/CryptorSimd.h"

namespace {

constexpr size_t kSize = size_t{64} << 20;

std::vector<uint8_t>& Buffer() {
    static std::vector<uint8_t> buffer = [] {
        std::vector<uint8_t> b(kSize);
        for (size_t i = 0; i < b.size(); ++i) {
            b[i] = static_cast<uint8_t>(i * 131 + (i >> 9));
        }
        return b;
    }();
    return buffer;
}

// Arg: the inner loop (0 bytes, 1 SSE2, 2 AVX2; -1 the automatic choice).
void BM_Encrypt(benchmark::State& state) {
    const int level = static_cast<int>(state.range(0));
    if (level >= 0 && pind::detail::SetCryptorSimdLevel(level) != level) {
        state.SkipWithError("level not available");
        return;
    }
    std::vector<uint8_t>& buffer = Buffer();
    CClientCryptor check(7, 1, 3, 9, 5, 2, 4, 6);
    std::vector<uint8_t> sample(buffer.begin(), buffer.begin() + 4096);
    check.Encrypt(sample.data(), 4096);
    check.Decrypt(sample.data(), 4096);
    if (!std::equal(sample.begin(), sample.end(), buffer.begin())) {
        state.SkipWithError("round trip failed");
        return;
    }
    CClientCryptor cryptor(7, 1, 3, 9, 5, 2, 4, 6);
    for (auto _ : state) {
        cryptor.Encrypt(buffer.data(), static_cast<int>(buffer.size()));
        benchmark::DoNotOptimize(buffer.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kSize));
    pind::detail::SetCryptorSimdLevel(-1);
}
BENCHMARK(BM_Encrypt)->Arg(-1)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void BM_Decrypt(benchmark::State& state) {
    const int level = static_cast<int>(state.range(0));
    if (level >= 0 && pind::detail::SetCryptorSimdLevel(level) != level) {
        state.SkipWithError("level not available");
        return;
    }
    std::vector<uint8_t>& buffer = Buffer();
    CClientCryptor cryptor(7, 1, 3, 9, 5, 2, 4, 6);
    for (auto _ : state) {
        cryptor.Decrypt(buffer.data(), static_cast<int>(buffer.size()));
        benchmark::DoNotOptimize(buffer.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kSize));
    pind::detail::SetCryptorSimdLevel(-1);
}
BENCHMARK(BM_Decrypt)->Arg(-1)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void BM_Memcpy(benchmark::State& state) {
    std::vector<uint8_t>& buffer = Buffer();
    std::vector<uint8_t> target(kSize);
    for (auto _ : state) {
        std::memcpy(target.data(), buffer.data(), kSize);
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(kSize));
}
BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond);

// Small network packets: the per-call cost of picking the inner loop and splitting into runs.
void BM_EncryptPacket(benchmark::State& state) {
    std::vector<uint8_t> packet(static_cast<size_t>(state.range(0)), 0x5A);
    CClientCryptor cryptor(7, 1, 3, 9, 5, 2, 4, 6);
    for (auto _ : state) {
        cryptor.Encrypt(packet.data(), static_cast<int>(packet.size()));
        benchmark::DoNotOptimize(packet.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(BM_EncryptPacket)->Arg(16)->Arg(100)->Arg(1400);

void BM_Int512DiffBits(benchmark::State& state) {
    const Int512 a =
        Int512::FromBitIndex(3) | Int512::FromBitIndex(200) | Int512::FromBitIndex(511);
    const Int512 b = Int512::FromBitIndex(3) | Int512::FromBitIndex(70);
    std::vector<uint32_t> otherOnly, thisOnly;
    a.DiffBits(b, otherOnly, thisOnly);
    if (otherOnly != std::vector<uint32_t>{70} || thisOnly != std::vector<uint32_t>{200, 511}) {
        state.SkipWithError("DiffBits gives a wrong result");
        return;
    }
    for (auto _ : state) {
        a.DiffBits(b, otherOnly, thisOnly);
        benchmark::DoNotOptimize(thisOnly.data());
    }
}
BENCHMARK(BM_Int512DiffBits);

}  // namespace
