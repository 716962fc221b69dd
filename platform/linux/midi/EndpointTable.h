#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "MidiTransport.h"

namespace ovka {

/// The endpoints of one direction. A name keeps its id for as long as the table lives, also while
/// the endpoint is away, so that a program that comes back is the same destination; the system's
/// own numbers are given to others meanwhile and would not do. Ids of one table mean nothing to
/// another: what is left over from before a restart leads nowhere.
class EndpointTable {
 public:
  EndpointTable();
  /// What the system says: a name (made unique here) and the system's address, never 0.
  struct Found {
    std::string name;
    std::uint32_t address = 0;
  };

  /// Replaces what is there, in the given order; true when anything came, went or moved. Any thread
  /// that may lock.
  bool replace(std::vector<Found> found);
  /// What is there, in the system's order.
  [[nodiscard]] std::vector<MidiEndpoint> endpoints() const;
  /// The name of an endpoint that is there.
  [[nodiscard]] std::optional<std::string> nameOf(std::uint64_t id) const;
  /// 0 while the endpoint is away. Any thread, without a lock.
  [[nodiscard]] std::uint32_t address(std::uint64_t id) const noexcept;

 private:
  /// More names than this in one run: those that are away longest give their places up.
  static constexpr std::size_t kPlaces = 1024;
  static constexpr unsigned kPlaceBits = 10;

  struct Place {
    std::string name;
    std::uint32_t generation = 0;
    std::uint64_t lastSeen = 0;
  };
  [[nodiscard]] std::optional<std::size_t> placeFor(const std::string& name);
  [[nodiscard]] std::uint64_t idOf(std::size_t place) const;

  const std::uint32_t firstGeneration_;
  mutable std::mutex lock_;  // guards all but addresses_
  std::uint64_t round_ = 0;
  std::vector<Place> places_;
  std::vector<std::size_t> present_;
  /// Generation in the upper half, address in the lower.
  std::array<std::atomic<std::uint64_t>, kPlaces> addresses_{};
};

}  // namespace ovka
