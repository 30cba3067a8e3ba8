#pragma once

#include <string>

namespace NoxAgent {

/// An answer of HTTP/1.1 whose body comes in chunks, because its length is not known at first. The
/// body is lines of JSON.
struct ChunkedBody {
  /// The header of the answer, status 200. With `keep` another request may follow.
  static std::string Header(bool keep);
  /// A part of the body as a chunk; an empty part is the end of the body.
  static std::string Chunk(const std::string& part);
};

}  // namespace NoxAgent
