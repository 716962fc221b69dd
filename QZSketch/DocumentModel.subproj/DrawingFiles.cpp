#include "DrawingFiles.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace ovka {
namespace {

void append16(std::string* to, std::uint32_t value) {
  *to += static_cast<char>(value & 0xFFU);
  *to += static_cast<char>(value >> 8U & 0xFFU);
}

void append32(std::string* to, std::uint32_t value) {
  append16(to, value & 0xFFFFU);
  append16(to, value >> 16U);
}

constexpr std::uint32_t kShort = 3, kLong = 4, kRational = 5;

struct TiffField {
  std::uint32_t tag, type, value;
};

}  // namespace

std::string drawingAsPdf() {
  const std::string box = std::to_string(kDrawingWidth) + " " + std::to_string(kDrawingHeight);
  const std::array<std::string, 4> objects{"<< /Type /Catalog /Pages 2 0 R >>",
                                           "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
                                           "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 " + box +
                                               "] /Resources << >> /Contents 4 0 R >>",
                                           "<< /Length 0 >>\nstream\n\nendstream"};
  // The second line tells transfer programs that the file may be binary.
  std::string pdf = "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n";
  std::vector<std::size_t> offsets;
  for (const std::string& object : objects) {
    offsets.push_back(pdf.size());
    pdf += std::to_string(offsets.size()) + " 0 obj\n" + object + "\nendobj\n";
  }
  const std::size_t table = pdf.size();
  const std::string count = std::to_string(objects.size() + 1);
  pdf += "xref\n0 " + count + "\n0000000000 65535 f \n";
  for (const std::size_t offset : offsets) {
    std::array<char, 32> line{};
    std::snprintf(line.data(), line.size(), "%010zu 00000 n \n", offset);
    pdf += line.data();
  }
  return pdf + "trailer\n<< /Size " + count + " /Root 1 0 R >>\nstartxref\n" +
         std::to_string(table) + "\n%%EOF\n";
}

std::string drawingAsTiff() {
  constexpr std::uint32_t rowBytes = (kDrawingWidth + 7) / 8;
  // A white row: runs of at most 128 equal bytes; 0 is white.
  static_assert(rowBytes <= 128);
  std::string pixels;
  for (int row = 0; row < kDrawingHeight; ++row) {
    pixels += static_cast<char>(1 - static_cast<int>(rowBytes));
    pixels += '\0';
  }
  constexpr std::uint32_t kFields = 12;
  constexpr std::uint32_t resolution = 8 + 2 + 12 * kFields + 4;
  constexpr std::uint32_t strip = resolution + 8;
  const std::array<TiffField, kFields> fields{{
      {256, kLong, kDrawingWidth},
      {257, kLong, kDrawingHeight},
      {258, kShort, 1},      // one bit a pixel
      {259, kShort, 32773},  // runs of bytes
      {262, kShort, 0},      // 0 is white
      {273, kLong, strip},
      {277, kShort, 1},
      {278, kLong, kDrawingHeight},
      {279, kLong, static_cast<std::uint32_t>(pixels.size())},
      {282, kRational, resolution},
      {283, kRational, resolution},
      {296, kShort, 2},  // pixels an inch
  }};
  std::string tiff = "II*";
  tiff += '\0';
  append32(&tiff, 8);
  append16(&tiff, kFields);
  for (const TiffField& field : fields) {
    append16(&tiff, field.tag);
    append16(&tiff, field.type);
    append32(&tiff, 1);
    append32(&tiff, field.value);
  }
  append32(&tiff, 0);  // no further page
  append32(&tiff, 72);
  append32(&tiff, 1);
  return tiff + pixels;
}

}  // namespace ovka
