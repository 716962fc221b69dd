#pragma once

#include <string>

namespace ovka {

// The drawing of a document as a picture of its own. Until drawings have shapes to show, the page
// is empty.

/// Page of a drawing, in points of 1/72 inch.
inline constexpr int kDrawingWidth = 595;
inline constexpr int kDrawingHeight = 842;

/// One page as a PDF file.
[[nodiscard]] std::string drawingAsPdf();
/// The same as a black-and-white TIFF file of 72 pixels an inch.
[[nodiscard]] std::string drawingAsTiff();

}  // namespace ovka
