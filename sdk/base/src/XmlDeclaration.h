#pragma once

namespace BaseSDK {

class XmlCursor;

/// Scans an XML declaration from behind its "<?xml" on.
///
/// Versions 1.1, 1.2, ... count as 1.0, as the fifth edition of XML 1.0 asks for. Any name of an
/// encoding will do: the text is decoded already.
bool ScanXmlDeclaration(XmlCursor& cursor);

}  // namespace BaseSDK
