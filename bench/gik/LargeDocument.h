// A register description document of more than a megabyte, made of the
// real devices' documents: each one's nodes copied again and again under
// new names (every name and every reference to it gets a suffix of its
// copy), each copy's root category hung under one "Root".
#pragma once

#include <string>
#include <vector>

namespace bench {

// The ".xml" documents of aDirectory, by name.
std::vector<std::string> Documents(const std::string& aDirectory);

// A document of at least aBytes made of copies of aDocuments; empty when
// none of them parses.
std::string LargeDocument(const std::vector<std::string>& aDocuments, size_t aBytes);

// A whole file; empty when it cannot be read.
std::string ReadText(const std::string& aPath);

} // namespace bench
