#include "summary.h"

#include <sys/resource.h>

#include <cstdarg>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace vlm::tools {
namespace {

using Number = unsigned long long;

[[gnu::format(printf, 2, 3)]] void append(std::string& text, const char* format, ...) {
  char line[256];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  text += line;
}

double perSecond(double amount, const Summary& summary) {
  return summary.seconds > 0 ? amount / summary.seconds : 0;
}

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

void appendFrames(std::string& text, const Summary& summary) {
  const Counts& counts = summary.counts;
  text += "  frames   ";
  if (counts.captured > 0) append(text, "%llu captured, ", Number{counts.captured});
  if (counts.repeated > 0) append(text, "%llu repeated, ", Number{counts.repeated});
  if (counts.refused > 0) append(text, "%llu refused, ", Number{counts.refused});
  append(text, "%llu in the stream", Number{counts.encoded});
  if (counts.undecodable > 0) append(text, ", %llu undecodable", Number{counts.undecodable});
  if (counts.decoded > 0) {
    append(text, ", %llu decoded, %llu shown (%.1f a second), %llu dropped", Number{counts.decoded},
           Number{counts.shown}, perSecond(static_cast<double>(counts.shown), summary),
           Number{counts.dropped});
  }
  text += '\n';
}

}  // namespace

double cpuSecondsSoFar() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::string asText(const Summary& summary) {
  const Counts& counts = summary.counts;
  std::string text;
  text += summary.command + " of " + summary.source;
  append(text, ", %d x %d, %.1f s", counts.size.width, counts.size.height, summary.seconds);
  text += " (" + summary.ending.reason + ")\n";
  appendFrames(text, summary);
  append(text, "  stream   %llu bytes, %.2f Mb/s, %llu key frame%s\n", Number{counts.bytes},
         perSecond(static_cast<double>(counts.bytes) * 8e-6, summary), Number{counts.keyframes},
         counts.keyframes == 1 ? "" : "s");
  if (counts.latency.count() > 0) {
    append(text, "  latency  median %.1f ms, 95 %% within %.1f ms, longest %.1f ms\n",
           counts.latency.percentileMs(0.5), counts.latency.percentileMs(0.95),
           counts.latency.maxMs());
  }
  append(text, "  CPU      %.2f s, %.0f %% of one core\n", summary.cpuSeconds,
         perSecond(summary.cpuSeconds * 100, summary));
  return text;
}

std::string asJson(const Summary& summary) {
  const Counts& counts = summary.counts;
  const nlohmann::ordered_json json{
      {"command", summary.command},
      {"source", summary.source},
      {"ended", summary.ending.reason},
      {"failed", summary.ending.failed},
      {"seconds", summary.seconds},
      {"width", counts.size.width},
      {"height", counts.size.height},
      {"captured", counts.captured},
      {"repeated", counts.repeated},
      {"refused", counts.refused},
      {"encoded", counts.encoded},
      {"keyframes", counts.keyframes},
      {"bytes", counts.bytes},
      {"bitsPerSecond", perSecond(static_cast<double>(counts.bytes) * 8, summary)},
      {"undecodable", counts.undecodable},
      {"decoded", counts.decoded},
      {"shown", counts.shown},
      {"dropped", counts.dropped},
      {"shownPerSecond", perSecond(static_cast<double>(counts.shown), summary)},
      {"latencyMs",
       {{"median", counts.latency.percentileMs(0.5)},
        {"p95", counts.latency.percentileMs(0.95)},
        {"max", counts.latency.maxMs()}}},
      {"cpuSeconds", summary.cpuSeconds},
  };
  // Names of files and applications need not be UTF-8.
  return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
}

}  // namespace vlm::tools
