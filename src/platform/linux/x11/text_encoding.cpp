#include "platform/linux/x11/text_encoding.h"

#include <glib.h>
#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <memory>

namespace vlm::platform::x11 {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr char kEscape = '\x1B';
constexpr char kControlSequence = '\x9B';

class Converter {
 public:
  explicit Converter(const char* from) : state_(iconv_open("UTF-8", from)) {}
  ~Converter() {
    if (isOpen()) iconv_close(state_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  bool isOpen() const {
    return state_ != iconv_t(-1);  // NOLINT(performance-no-int-to-ptr)
  }

  void convert(std::string_view text, std::string& result) {
    auto* from = const_cast<char*>(text.data());  // iconv() only reads it
    std::size_t left = text.size();
    while (left > 0) {
      std::array<char, 256> piece;
      char* to = piece.data();
      std::size_t room = piece.size();
      const bool isDone = iconv(state_, &from, &left, &to, &room) != std::size_t(-1);
      const int reason = errno;
      result.append(piece.data(), to);
      if (isDone || reason == E2BIG) continue;
      result += kReplacement;
      if (reason == EINVAL) return;  // cut off in the middle of a character
      ++from;
      --left;
    }
  }

 private:
  const iconv_t state_;
};

std::string converted(const char* encoding, std::string_view text) {
  std::string result;
  Converter converter(encoding);
  if (converter.isOpen()) {
    converter.convert(text, result);
  } else if (!text.empty()) {
    result = kReplacement;
  }
  return result;
}

// A set of characters that a sequence puts into the left (7-bit) or right (8-bit) half of the
// codes. iconv() knows each as the right half of an encoding.
struct Designation {
  std::string_view sequence;  // after the escape character
  const char* encoding;
  bool isRight;
  bool isSevenBit;  // its codes are given without the eighth bit
};
constexpr std::array kDesignations{
    Designation{"(B", "ISO-8859-1", false, false}, Designation{"(J", "ISO-8859-1", false, false},
    Designation{")I", "SHIFT_JIS", true, false},   Designation{"-A", "ISO-8859-1", true, false},
    Designation{"-B", "ISO-8859-2", true, false},  Designation{"-C", "ISO-8859-3", true, false},
    Designation{"-D", "ISO-8859-4", true, false},  Designation{"-F", "ISO-8859-7", true, false},
    Designation{"-G", "ISO-8859-6", true, false},  Designation{"-H", "ISO-8859-8", true, false},
    Designation{"-L", "ISO-8859-5", true, false},  Designation{"-M", "ISO-8859-9", true, false},
    Designation{"-V", "ISO-8859-10", true, false}, Designation{"-Y", "ISO-8859-13", true, false},
    Designation{"-_", "ISO-8859-14", true, false}, Designation{"-b", "ISO-8859-15", true, false},
    Designation{"-f", "ISO-8859-16", true, false}, Designation{"-T", "TIS-620", true, false},
    Designation{"$(A", "GB2312", false, true},     Designation{"$)A", "GB2312", true, false},
    Designation{"$(B", "EUC-JP", false, true},     Designation{"$)B", "EUC-JP", true, false},
    Designation{"$(C", "EUC-KR", false, true},     Designation{"$)C", "EUC-KR", true, false},
};

class CompoundText {
 public:
  explicit CompoundText(std::string_view text) : rest_(text) {}

  std::string decode() {
    while (!rest_.empty()) {
      if (rest_.front() == kEscape) {
        takeEscape();
      } else if (rest_.front() == kControlSequence) {
        take(std::min(rest_.find(']'), rest_.size() - 1) + 1);  // the direction of writing
      } else {
        takeRun();
      }
    }
    return result_;
  }

 private:
  std::string_view take(std::size_t count) {
    const auto taken = rest_.substr(0, count);
    rest_.remove_prefix(taken.size());
    return taken;
  }

  void takeEscape() {
    take(1);
    if (rest_.starts_with("%G")) {
      take(2);
      result_ += validUtf8(take(std::min(rest_.find("\x1B%@"), rest_.size())));
      return;
    }
    if (rest_.starts_with("%/")) {
      takeSegment();
      return;
    }
    const auto known = std::ranges::find_if(
        kDesignations, [&](const auto& each) { return rest_.starts_with(each.sequence); });
    if (known != kDesignations.end()) {
      take(known->sequence.size());
      (known->isRight ? right_ : left_) = &*known;
      return;
    }
    // Intermediate characters and a final one, of a set that is not known.
    const auto end = std::ranges::find_if(rest_, [](char c) { return c < 0x20 || c > 0x2F; });
    take(static_cast<std::size_t>(end - rest_.begin()) + 1);
  }

  // Text of another encoding, which names itself: "%/", a kind, two bytes of length, name, STX.
  void takeSegment() {
    take(3);
    const auto length = take(2);
    if (length.size() < 2) return;
    const auto part = take((length[0] & 0x7FU) * 128U + (length[1] & 0x7FU));
    const auto end = part.find('\x02');
    if (end == std::string_view::npos) return;
    result_ += converted(std::string(part.substr(0, end)).c_str(), part.substr(end + 1));
  }

  // Characters of one half.
  void takeRun() {
    const auto isRight = [](char c) { return (c & 0x80) != 0; };
    const bool right = isRight(rest_.front());
    const auto end = std::ranges::find_if(rest_, [&](char c) {
      return c == kEscape || c == kControlSequence || isRight(c) != right;
    });
    std::string run(take(static_cast<std::size_t>(end - rest_.begin())));
    const auto& set = right ? *right_ : *left_;
    if (set.isSevenBit) {
      for (char& c : run) c = static_cast<char>(c | 0x80);
    }
    result_ += converted(set.encoding, run);
  }

  std::string_view rest_;
  std::string result_;
  const Designation* left_ = &kDesignations[0];
  const Designation* right_ = &kDesignations[3];
};

}  // namespace

std::string fromLatin1(std::string_view text) {
  return converted("ISO-8859-1", text);
}

// Its segments name their encodings, and some of those can say more than Unicode has.
std::string fromCompoundText(std::string_view text) {
  return validUtf8(CompoundText(text).decode());
}

// GLib and not iconv(), which lets the forms of five and six bytes pass.
std::string validUtf8(std::string_view text) {
  const std::unique_ptr<char, decltype(&g_free)> valid(
      g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
  return valid.get();
}

}  // namespace vlm::platform::x11
