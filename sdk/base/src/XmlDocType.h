#pragma once

namespace BaseSDK {

class XmlCursor;

/// Scans a document type declaration from behind its "<!DOCTYPE" on.
///
/// Nothing of it is used, and what it refers to is not read. One with an internal subset is
/// refused: entities and values of attributes could be declared there, and leaving them out would
/// change what the document says.
bool ScanXmlDocType(XmlCursor& cursor);

}  // namespace BaseSDK
