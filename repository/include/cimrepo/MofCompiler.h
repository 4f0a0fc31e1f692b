#ifndef CIMREPO_MOFCOMPILER_H
#define CIMREPO_MOFCOMPILER_H

#include <cimrepo/ClassRepository.h>
#include <cimrepo/MofError.h>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include <map>
#include <string>
#include <vector>

namespace cimrepo
{

/// An "instance of" declaration, typed from its class. The instance carries the properties the
/// declaration sets plus the class's non-null defaults for the others; its path is built from the
/// key properties when they are all set.
struct MofInstance
{
    Pegasus::CIMNamespaceName nameSpace;
    Pegasus::CIMInstance instance;
    std::string file;
    int line = 0;
};

/// Compiles DMTF MOF into a ClassRepository: qualifier declarations and classes go into the
/// repository, instance declarations are collected for the caller (the repository holds no
/// instances). Understands #pragma include (relative to the including file) and
/// #pragma namespace (in effect until the end of the file that sets it); other pragmas are
/// ignored. Qualifiers need no declaration: undeclared DMTF qualifiers get their standard type
/// and flavor, unknown ones a type inferred from the value.
///
/// Every problem throws MofError naming the file and line. Declarations before the faulty one
/// stay in the repository.
class MofCompiler
{
public:
    explicit MofCompiler(ClassRepository& repository);

    void compileFile(const std::string& path, const Pegasus::CIMNamespaceName& defaultNs);

    /// sourceName names the text in errors; includes are resolved against its directory.
    void compileString(const std::string& text, const std::string& sourceName,
                       const Pegasus::CIMNamespaceName& defaultNs);

    const std::vector<MofInstance>& instances() const
    {
        return _instances;
    }

    /// Count of classes and qualifier declarations added so far.
    std::size_t classCount() const
    {
        return _classCount;
    }

    std::size_t qualifierDeclCount() const
    {
        return _qualifierDeclCount;
    }

private:
    void _compile(const std::string& text, const std::string& sourceName,
                  const Pegasus::CIMNamespaceName& ns, int depth);

    ClassRepository& _repository;
    std::vector<MofInstance> _instances;
    std::map<std::string, Pegasus::CIMObjectPath> _aliases;
    std::size_t _classCount = 0;
    std::size_t _qualifierDeclCount = 0;
};

} // namespace cimrepo

#endif
