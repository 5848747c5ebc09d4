/// @file
/// Request documents from the command line.
#ifndef ONVIFCTL_DOCUMENTS_REQUESTDOCUMENT_H
#define ONVIFCTL_DOCUMENTS_REQUESTDOCUMENT_H

#include <string>
#include <vector>

namespace onvifctl {

/// Makes a request document from words: each word is a command, and "--NAME VALUE" behind it is one
/// of its parameters. A name may be a path ("--time/hour 5"); paths that begin alike share
/// elements; one that begins with '/' ("--/user") is the same without it. Throws CFailure when a
/// word makes no sense.
std::string MakeRequest(const std::string& root, const std::vector<std::string>& words);

/// Reads a document from a file, or from standard input for "-". Throws CFailure when it cannot be
/// read or its root is none of @p roots.
std::string ReadDocument(const std::string& file, const std::vector<std::string>& roots);

/// The name of a document's root element; empty when the text is no document.
std::string RootOf(const std::string& document);

}  // namespace onvifctl

#endif
