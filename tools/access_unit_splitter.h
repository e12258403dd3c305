#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "library.h"

namespace vlm::tools {

// Splits an H.264 byte stream, as files hold it, into access units.
class AccessUnitSplitter {
 public:
  // The stream outlives the splitter and what next() returns.
  explicit AccessUnitSplitter(std::span<const std::uint8_t> stream);

  // The next access unit that holds a picture; nothing at the end.
  std::optional<AccessUnit> next();

 private:
  // A start code and what follows it.
  struct Unit {
    std::size_t begin;
    std::size_t payload;
  };

  Unit unitFrom(std::size_t from) const;
  bool isPicture(const Unit& unit) const;
  bool startsAccessUnit(const Unit& unit) const;
  std::uint8_t type(const Unit& unit) const;

  std::span<const std::uint8_t> stream_;
  Unit unit_;
};

}  // namespace vlm::tools
