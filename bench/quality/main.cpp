// How sharp what is shared gets at a bit rate, and how soon: ours beside x264 as FFmpeg and
// GStreamer drive it, on pictures made here, in simulated time.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "bench/quality/trial.h"
#include "bench/quality/wander.h"

namespace vlm::bench {
namespace {

struct Choice {
  std::vector<std::string> contents;
  std::vector<std::string> encoders{"ours", "FFmpeg", "GStreamer"};
  std::vector<std::string> rates{"500", "1000", "2000", "4000", "8000"};
  std::vector<std::string> delays{"normal", "low"};
  std::string csv;
  std::string pictures;
  std::size_t width = 1920;
  std::size_t height = 1080;
  int seconds = 10;
  int every = 1;   // of so many pictures one is submitted
  int wander = 0;  // minutes
  std::uint32_t seed = 1;
  std::string stream;
};

std::vector<std::string> split(const std::string& text) {
  std::vector<std::string> parts;
  std::istringstream in(text);
  for (std::string part; std::getline(in, part, ',');) parts.push_back(part);
  return parts;
}

Choice parse(int count, char** arguments) {
  Choice choice;
  for (const auto& kind : contentKinds()) choice.contents.push_back(kind.name);
  for (int i = 1; i + 1 < count; i += 2) {
    const std::string name = arguments[i];
    const std::string value = arguments[i + 1];
    if (name == "--contents")
      choice.contents = split(value);
    else if (name == "--encoders")
      choice.encoders = split(value);
    else if (name == "--rates")
      choice.rates = split(value);
    else if (name == "--delays")
      choice.delays = split(value);
    else if (name == "--csv")
      choice.csv = value;
    else if (name == "--pictures")
      choice.pictures = value;
    else if (name == "--seconds")
      choice.seconds = std::atoi(value.c_str());
    else if (name == "--every")
      choice.every = std::max(std::atoi(value.c_str()), 1);
    else if (name == "--wander")
      choice.wander = std::atoi(value.c_str());
    else if (name == "--seed")
      choice.seed = static_cast<std::uint32_t>(std::atoi(value.c_str()));
    else if (name == "--stream")
      choice.stream = value;
    else if (name == "--height")
      choice.height = static_cast<std::size_t>(std::atoi(value.c_str()));
    else
      throw std::invalid_argument("unknown option " + name);
  }
  choice.width = choice.height / 9 * 16;
  return choice;
}

MakeEncoder maker(const std::string& name) {
  if (name == "ours") return makeOurs;
  if (name == "FFmpeg") return makeFFmpeg;
  if (name == "GStreamer") return makeGStreamer;
  throw std::invalid_argument("unknown encoder " + name);
}

const ContentKind& content(const std::string& name) {
  const auto found = std::ranges::find(contentKinds(), name, &ContentKind::name);
  if (found == contentKinds().end()) throw std::invalid_argument("unknown content " + name);
  return *found;
}

// Seconds that the bytes of one picture of 40 dB take at a rate.
double bitsOf40(const ContentKind& kind, const Choice& choice) {
  const auto pictures = kind.make();
  if (!pictures->standsStill()) return -1;
  Canvas canvas(choice.width, choice.height);
  Picture picture(choice.width, choice.height);
  pictures->draw(0, canvas);
  convert(canvas, picture);
  return bitsNeeded(picture, 40);
}

void write(std::ostream& csv, const Trial& trial, const Outcome& outcome) {
  for (std::size_t at = 0; at < outcome.moments.size(); ++at) {
    const auto& moment = outcome.moments[at];
    csv << trial.content->name << ',' << trial.encoder << ',' << trial.settings.bitsPerSecond << ','
        << (trial.settings.lowLatency ? "low" : "normal") << ','
        << static_cast<double>(at) / Content::kFramesPerSecond << ',' << moment.bytes << ','
        << moment.quality.psnr << ',' << moment.quality.ssim << '\n';
  }
}

void print(const Trial& trial, const Figures& figures, double bits40) {
  const double rate = trial.settings.bitsPerSecond;
  const double frame = rate / trial.settings.fps;
  const auto seconds = [](double value) {
    char text[16];
    std::snprintf(text, sizeof text, value < 0 ? "-" : "%.2f", value);
    return std::string(text);
  };
  std::printf(
      "| %-11s | %4.0f | %-6s | %-9s | %5.1f | %.4f | %5s | %5s | %5s | %5.2f | %5.2f | %6.1f | "
      "%5.2f |\n",
      trial.content->name.c_str(), rate / 1000, trial.settings.lowLatency ? "low" : "normal",
      trial.encoder.c_str(), figures.psnr, figures.ssim, seconds(figures.seconds38).c_str(),
      seconds(figures.seconds40).c_str(), seconds(bits40 < 0 ? -1 : bits40 / rate).c_str(),
      figures.averageRate / rate, figures.worstSecond / rate, figures.largestUnit / frame,
      figures.millisecondsEach);
  std::fflush(stdout);
}

void measure(const Choice& choice) {
  std::ofstream csv;
  if (!choice.csv.empty()) {
    csv.open(choice.csv);
    csv << "content,encoder,rate,delay,second,bytes,psnr,ssim\n";
  }
  std::puts(
      "| content     | kb/s | delay  | encoder   |  PSNR |   SSIM | s to 38 | to 40 | bytes alone "
      "| average / rate | worst s / rate | largest, frames | ms each |");
  std::puts("|---|--:|---|---|--:|--:|--:|--:|--:|--:|--:|--:|--:|");
  for (const auto& name : choice.contents) {
    const auto& kind = content(name);
    const double bits40 = bitsOf40(kind, choice);
    for (const auto& delay : choice.delays) {
      for (const auto& rate : choice.rates) {
        for (const auto& encoder : choice.encoders) {
          Trial trial{.content = &kind, .encoder = encoder, .make = maker(encoder)};
          trial.settings = {.width = choice.width,
                            .height = choice.height,
                            .fps = Content::kFramesPerSecond,
                            .bitsPerSecond = std::atoi(rate.c_str()) * 1000,
                            .lowLatency = delay == "low"};
          trial.frames = choice.seconds * Content::kFramesPerSecond;
          trial.every = choice.every;
          trial.pictures = choice.pictures;
          const auto outcome = run(trial);
          print(trial, figuresOf(outcome), bits40);
          if (csv.is_open()) write(csv, trial, outcome);
        }
      }
    }
  }
}

bool perform(const Choice& choice) {
  if (choice.wander == 0) {
    measure(choice);
    return true;
  }
  return wander({.width = choice.width,
                 .height = choice.height,
                 .minutes = choice.wander,
                 .lowLatency = choice.delays.front() == "low",
                 .seed = choice.seed,
                 .stream = choice.stream});
}

}  // namespace
}  // namespace vlm::bench

int main(int count, char** arguments) {
  av_log_set_level(AV_LOG_ERROR);
  try {
    return vlm::bench::perform(vlm::bench::parse(count, arguments)) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quality: %s\n", error.what());
    return 1;
  }
}
