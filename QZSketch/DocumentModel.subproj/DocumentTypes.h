#pragma once

#include <string>
#include <string_view>

namespace ovka {

/// Type names of documents.
inline constexpr std::string_view OVKA4DrawDocumentType = "OVKA Brain Note";
inline constexpr std::string_view OVKA4ReferenceDataType = "OVKA Reference Data";
inline constexpr std::string_view kPdfDocumentType = "PDF";
inline constexpr std::string_view kTiffDocumentType = "TIFF";

/// Why a document could not be read or written.
struct DocumentError {
  std::string domain = "OVKA4ErrorDomain";
  int code = 1;
  std::string description = "OVKA4 document data could not be read for an unknown reason.";
  std::string reason = "An unknown error occured.";
  /// What, where and what to do, for the person.
  std::string detail;
};

}  // namespace ovka
