#include <cstring>
#include <fstream>
#include <iterator>

#include "bitstream_peers.h"
#include "codec/bitstream.h"
#include "kernels/reference_splitter.h"
#include "turns.h"

namespace vlm::bench {
namespace {

using codec::Bytes;
using codec::ByteView;
using codec::NalRange;

const Bytes& realStream() {
  static const Bytes stream = [] {
    std::ifstream file(VLM_BENCH_STREAM, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
  }();
  return stream;
}

ByteView unitAt(const NalRange& unit) {
  return ByteView(realStream()).subspan(unit.offset, unit.length);
}

bool isParameterSet(ByteView unit) {
  return !unit.empty() && ((unit[0] & 0x1F) == 7 || (unit[0] & 0x1F) == 8);
}

// The stream cut where pictures begin: before each slice that starts at macroblock 0 (its first bit
// is set), together with the other units in front of it.
std::vector<ByteView> accessUnits() {
  std::vector<ByteView> cut;
  std::int64_t begin = 0;
  std::int64_t next = -1;
  bool slices = false;
  for (const auto& unit : codec::findNalUnits(realStream())) {
    const int type = realStream()[unit.offset] & 0x1F;
    const bool slice = type == 1 || type == 5;
    const bool starts = slice ? (realStream()[unit.offset + 1] & 0x80) != 0 : true;
    if (slices && starts) {
      next = unit.offset - 4;
      cut.push_back(ByteView(realStream()).subspan(begin, next - begin));
      begin = next;
      slices = false;
    }
    slices = slices || slice;
  }
  cut.push_back(ByteView(realStream()).subspan(begin));
  return cut;
}

// SPS and PPS of the stream's first picture, each behind its start code.
Bytes parameterSets() {
  Bytes sets;
  for (const auto& unit : codec::findNalUnits(accessUnits().front())) {
    const auto bytes = unitAt(unit);
    if (!isParameterSet(bytes)) continue;
    sets.insert(sets.end(), {0, 0, 0, 1});
    sets.insert(sets.end(), bytes.begin(), bytes.end());
  }
  return sets;
}

// The same in the form that MP4 files carry.
Bytes avcConfiguration() {
  const Bytes sets = parameterSets();
  Bytes out{1, 77, 0, 40, 0xFF, 0xE1};
  for (const auto& unit : codec::findNalUnits(sets)) {
    if (sets[unit.offset] % 32 == 8) out.push_back(1);
    out.push_back(static_cast<std::uint8_t>(unit.length >> 8));
    out.push_back(static_cast<std::uint8_t>(unit.length));
    out.insert(out.end(), sets.begin() + unit.offset, sets.begin() + unit.offset + unit.length);
  }
  return out;
}

void splitRealStream(benchmark::State& state) {
  const ByteView stream = realStream();
  Bytes copy(stream.size());
  Turns turns(state);
  turns.add("ours", [&](auto) { benchmark::DoNotOptimize(codec::findNalUnits(stream)); });
  turns.add("ffmpeg", [&](auto) { benchmark::DoNotOptimize(countWithFfmpeg(stream)); });
  turns.add("gstreamer", [&](auto) { benchmark::DoNotOptimize(countWithGstreamer(stream)); });
  turns.add("bytes", [&](auto) { benchmark::DoNotOptimize(test::splitByteByByte(stream)); });
  turns.add("memcpy", [&](auto) {
    benchmark::DoNotOptimize(std::memcpy(copy.data(), stream.data(), stream.size()));
  });
  turns.run(static_cast<double>(stream.size()));
}

// Inputs made to be slow: `pattern` over and over.
void splitPattern(benchmark::State& state, std::initializer_list<std::uint8_t> pattern) {
  Bytes stream;
  while (stream.size() < (std::size_t{4} << 20)) stream.insert(stream.end(), pattern);
  Turns turns(state);
  turns.add("ours", [&](auto) { benchmark::DoNotOptimize(codec::findNalUnits(stream)); });
  turns.add("bytes", [&](auto) { benchmark::DoNotOptimize(test::splitByteByByte(stream)); });
  turns.run(static_cast<double>(stream.size()));
}

void readAccessUnits(benchmark::State& state) {
  const auto units = accessUnits();
  FfmpegLengthPrefixer peer(parameterSets());
  codec::ParameterSets held;
  Turns turns(state);
  turns.add("ours", [&](auto) {
    for (const auto& unit : units) {
      benchmark::DoNotOptimize(
          codec::buildLengthPrefixedSample(unit, codec::findNalUnits(unit), held));
    }
  });
  turns.add("ffmpeg", [&](auto) {
    for (const auto& unit : units) peer.convert(unit);
  });
  turns.run(static_cast<double>(realStream().size()));
}

void writeAccessUnits(benchmark::State& state) {
  std::vector<Bytes> samples;
  codec::ParameterSets held;
  for (const auto& unit : accessUnits()) {
    samples.push_back(
        codec::buildLengthPrefixedSample(unit, codec::findNalUnits(unit), held).bytes);
  }
  const std::optional<ByteView> sets[] = {*held.sps, *held.pps};
  FfmpegAnnexBWriter filter(avcConfiguration());
  FfmpegLengthPrefixer opposite(parameterSets());
  const auto units = accessUnits();
  Turns turns(state);
  turns.add("ours", [&](auto) {
    for (const auto& sample : samples) {
      benchmark::DoNotOptimize(
          codec::buildAnnexBAccessUnit(&sample == samples.data(), sets, sample));
    }
  });
  turns.add("ffmpeg", [&](auto) {
    for (const auto& sample : samples) filter.convert(sample);
  });
  turns.add("ffmpeg_reader", [&](auto) {
    for (const auto& unit : units) opposite.convert(unit);
  });
  turns.run(static_cast<double>(realStream().size()));
}

BENCHMARK(splitRealStream)->UseManualTime();
BENCHMARK_CAPTURE(splitPattern, zeros, {0})->UseManualTime();
BENCHMARK_CAPTURE(splitPattern, ones, {1})->UseManualTime();
BENCHMARK_CAPTURE(splitPattern, ff, {0xFF})->UseManualTime();
BENCHMARK_CAPTURE(splitPattern, 00_00_03, {0, 0, 3})->UseManualTime();
BENCHMARK_CAPTURE(splitPattern, 00_01, {0, 1})->UseManualTime();
BENCHMARK_CAPTURE(splitPattern, one_byte_units, {0, 0, 1, 0x65})->UseManualTime();
BENCHMARK_CAPTURE(splitPattern, empty_units, {0, 0, 1})->UseManualTime();
BENCHMARK_CAPTURE(splitPattern, long_start_codes, {0, 0, 0, 1, 0x65})->UseManualTime();
BENCHMARK(readAccessUnits)->UseManualTime();
BENCHMARK(writeAccessUnits)->UseManualTime();

// A start code in every block, zeros in between: the stepping search can't skip a byte.
void splitSparseZeros(benchmark::State& state) {
  Bytes stream(std::size_t{4} << 20, 0);
  for (std::size_t i = 100; i < stream.size(); i += 128) stream[i] = 1;
  Turns turns(state);
  turns.add("ours", [&](auto) { benchmark::DoNotOptimize(codec::findNalUnits(stream)); });
  turns.add("bytes", [&](auto) { benchmark::DoNotOptimize(test::splitByteByByte(stream)); });
  turns.run(static_cast<double>(stream.size()));
}
BENCHMARK(splitSparseZeros)->UseManualTime();

}  // namespace
}  // namespace vlm::bench
