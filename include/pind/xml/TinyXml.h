// The TinyXML DOM (TiXmlDocument, TiXmlElement, TiXmlAttribute, TiXmlText, TiXmlComment,
// TiXmlDeclaration, TiXmlUnknown) for whole-document XML work. The library carries it: linking
// PindBase brings TinyXML along, and the Windows DLL exports its classes itself.
//   TiXmlDocument doc; doc.LinkEndChild(new TiXmlElement("root")); doc.SaveFile("a.xml");
#ifndef PIND_XML_TINYXML_H_
#define PIND_XML_TINYXML_H_

// TinyXML's header selects its std::string interface itself (TIXML_USE_STL), as the library was
// built; clients must not change that choice.
#include <tinyxml.h>

#endif  // PIND_XML_TINYXML_H_
