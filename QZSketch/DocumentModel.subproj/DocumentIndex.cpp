#include "DocumentIndex.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "DigitScout.h"
#include "PropertyListReader.h"
#include "srtToLong.h"

namespace ovka {
namespace {

constexpr std::size_t kPiecePoints = 64U << 10U;

/// Passes everything but the samples on to a tree.
class Indexer final : public PropertyListEvents {
 public:
  explicit Indexer(DocumentIndex& index) : index_(index) {}
  /// The parser whose offsets are noted; before parsing.
  void follow(const PropertyListParser& parser) { parser_ = &parser; }
  PropertyListBuilder& tree() { return tree_; }

  bool beginDictionary() override {
    if (sample_ != nullptr) return refuse("the samples of a channel are data or an array of texts");
    ++depth_;
    return tree_.beginDictionary();
  }
  bool key(std::string_view text) override {
    if (depth_ == 1) {
      const auto found = std::find(kSampleKeys.begin(), kSampleKeys.end(), text);
      if (found != kSampleKeys.end()) {
        sample_ = &index_.samples[static_cast<std::size_t>(found - kSampleKeys.begin())];
        *sample_ = {};
        return true;
      }
    }
    return tree_.key(text);
  }
  bool endDictionary() override {
    --depth_;
    return tree_.endDictionary();
  }
  bool beginArray() override {
    if (depth_ == 0) return refuse("a document is a dictionary, this is an array");
    if (sample_ == nullptr) {
      ++depth_;
      return tree_.beginArray();
    }
    if (sample_->kind == SampleItem::Kind::Texts) return refuse("a sample is a text");
    *sample_ = {SampleItem::Kind::Texts, parser_->valueOffset(), 0};
    return true;
  }
  bool endArray() override {
    if (sample_ != nullptr) {
      sample_ = nullptr;
      return true;
    }
    --depth_;
    return tree_.endArray();
  }
  bool string(std::string_view text) override {
    if (depth_ == 0) return refuse("a document is a dictionary, this is a text");
    if (sample_ == nullptr) return tree_.string(text);
    if (sample_->kind != SampleItem::Kind::Texts) {
      return refuse("the samples of a channel are data or an array of texts, not one text");
    }
    ++sample_->length;
    return true;
  }
  bool beginData(bool* wanted) override {
    if (depth_ == 0) return refuse("a document is a dictionary, this is data");
    if (sample_ == nullptr) return tree_.beginData(wanted);
    if (sample_->kind == SampleItem::Kind::Texts) return refuse("a sample is a text");
    *wanted = false;
    *sample_ = {SampleItem::Kind::Block, parser_->valueOffset(), 0};
    return true;
  }
  bool data(std::span<const std::uint8_t> bytes) override { return tree_.data(bytes); }
  bool endData(std::uint64_t length) override {
    if (sample_ == nullptr) return tree_.endData(length);
    sample_->length = length;
    const PropertyListParser::Meeting& met = parser_->meeting();
    if (met.digits > 0 && met.digits % 2 == 0 && met.value == sample_->offset) {
      sample_->middle = met.offset;
      sample_->middleBytes = met.digits / 2;
    }
    sample_ = nullptr;
    return true;
  }
  /// After a fault: the item in which it lies ends there.
  void endEarly() {
    if (sample_ != nullptr && sample_->kind == SampleItem::Kind::Block) {
      sample_->length = parser_->dataDigits() / 2;
    }
    sample_ = nullptr;
  }
  [[nodiscard]] std::string refusal() const override {
    return refusal_.empty() ? tree_.refusal() : refusal_;
  }

 private:
  bool refuse(std::string text) {
    refusal_ = std::move(text);
    return false;
  }

  DocumentIndex& index_;
  const PropertyListParser* parser_ = nullptr;
  PropertyListBuilder tree_;
  SampleItem* sample_ = nullptr;  ///< being read
  int depth_ = 0;
  std::string refusal_;
};

/// Gathers samples in pieces, whatever form they have.
class SampleReader final : public PropertyListEvents {
 public:
  SampleReader(std::uint64_t limit, std::size_t skippedBytes, std::int32_t factor,
               const TakeSamples& take)
      : left_(limit), skip_(skippedBytes), factor_(factor), take_(take) {
    piece_.reserve(kPiecePoints);
  }
  /// All that was asked for was passed on.
  [[nodiscard]] bool done() const { return left_ == 0; }
  void flush() {
    if (!piece_.empty()) take_(piece_);
    piece_.clear();
  }

  bool beginDictionary() override { return false; }
  bool key(std::string_view /*text*/) override { return false; }
  bool endDictionary() override { return false; }
  bool beginArray() override { return true; }
  bool endArray() override { return true; }
  bool string(std::string_view text) override {
    return add(static_cast<std::int32_t>(
        static_cast<std::uint32_t>(srtToLong(text) * std::int64_t{factor_})));
  }
  bool beginData(bool* /*wanted*/) override { return true; }
  bool data(std::span<const std::uint8_t> bytes) override {
    const std::size_t skipped = std::min(skip_, bytes.size());
    bytes = bytes.subspan(skipped);
    skip_ -= skipped;
    // A sample may be torn by the end of a run of digits.
    for (; tornBytes_ > 0 && !bytes.empty(); bytes = bytes.subspan(1)) {
      if (!addByte(bytes.front())) return false;
    }
    const std::size_t count =
        static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size() / 4, left_));
    if (count > 0) {
      flush();
      if (reinterpret_cast<std::uintptr_t>(bytes.data()) % alignof(std::int32_t) == 0) {
        take_({reinterpret_cast<const std::int32_t*>(bytes.data()), count});
      } else {
        piece_.resize(count);
        std::memcpy(piece_.data(), bytes.data(), 4 * count);
        flush();
      }
      left_ -= count;
      bytes = bytes.subspan(4 * count);
    }
    if (bytes.size() >= 4) return false;
    for (const std::uint8_t byte : bytes) {
      if (!addByte(byte)) return false;
    }
    return true;
  }
  bool endData(std::uint64_t /*length*/) override { return true; }

 private:
  bool add(std::int32_t value) {
    if (left_ == 0) return false;
    piece_.push_back(value);
    --left_;
    if (piece_.size() == kPiecePoints) flush();
    return true;
  }
  bool addByte(std::uint8_t byte) {
    torn_[tornBytes_++] = byte;
    if (tornBytes_ < torn_.size()) return true;
    tornBytes_ = 0;
    std::int32_t value = 0;
    std::memcpy(&value, torn_.data(), sizeof value);
    return add(value);
  }

  std::uint64_t left_;
  std::size_t skip_;  ///< bytes of a sample that belongs to the part before
  std::int32_t factor_;
  const TakeSamples& take_;
  std::vector<std::int32_t> piece_;
  std::array<std::uint8_t, 4> torn_{};
  std::size_t tornBytes_ = 0;
};

}  // namespace

bool readDocumentIndex(FileReader& file, DocumentIndex* index, PropertyListError* error,
                       const DocumentProgress& progress) {
  *index = {};
  Indexer indexer(*index);
  PropertyListParser parser(file, indexer);
  indexer.follow(parser);
  DigitScout scout(file);
  parser.follow(scout);
  if (progress) {
    parser.onProgress = [&](std::uint64_t done) { progress(done, file.size()); };
  }
  if (!parser.parse()) {
    *error = parser.error();
    return false;
  }
  index->list = indexer.tree().take();
  return true;
}

bool salvageDocumentIndex(FileReader& file, DocumentIndex* index) {
  *index = {};
  Indexer indexer(*index);
  PropertyListParser parser(file, indexer);
  indexer.follow(parser);
  if (!parser.parse()) indexer.endEarly();
  index->list = indexer.tree().takeUnfinished();
  return index->list.find("OVKA4data") != nullptr && index->samples[0].length >= 4;
}

bool readSamples(FileReader& file, const SampleItem& item, const SamplePart& part,
                 std::int32_t textFactor, const TakeSamples& take, PropertyListError* error,
                 const DocumentProgress& progress) {
  if (item.kind == SampleItem::Kind::None || part.count == 0) return true;
  const std::uint64_t skipped = part.first == 0 ? 0 : 4 * part.first - item.middleBytes;
  SampleReader reader(part.count, static_cast<std::size_t>(skipped), textFactor, take);
  PropertyListParser parser(file, reader);
  if (progress) {
    parser.onProgress = [&](std::uint64_t done) { progress(done, file.size()); };
  }
  const bool whole =
      part.first == 0 ? parser.parseValueAt(item.offset) : parser.parseDataFrom(item.middle);
  reader.flush();
  if (whole || reader.done()) return true;
  *error = parser.error();
  return false;
}

}  // namespace ovka
