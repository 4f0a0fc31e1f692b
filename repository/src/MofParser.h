#ifndef CIMREPO_MOFPARSER_H
#define CIMREPO_MOFPARSER_H

#include "MofAst.h"

#include <string>
#include <vector>

namespace cimrepo
{
namespace mof
{

/// Parses the text of one MOF file into productions, in the order written. Pragmas are kept as
/// productions so the compiler can act on include and namespace where they occur.
/// Throws MofError naming fileName and the line.
std::vector<Production> parseMof(const std::string& text, const std::string& fileName);

} // namespace mof
} // namespace cimrepo

#endif
