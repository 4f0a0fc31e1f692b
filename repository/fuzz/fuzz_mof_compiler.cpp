// libFuzzer harness: MOF text through the parser and the compiler into a
// class repository.
//
// Beyond "no crash, no leak": the only failure is a MofError naming the
// source and a line of the text; a compile is deterministic (the same text
// into a fresh repository ends the same way); and a text that compiles adds
// exactly the classes, qualifier declarations and instances it declares,
// each class then readable from the repository.

#include "MofParser.h"

#include <cimrepo/ClassRepository.h>
#include <cimrepo/MofCompiler.h>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/Exception.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <strings.h>

using namespace Pegasus;
using namespace cimrepo;

namespace
{

// A directory that does not exist, so relative includes fail without
// touching the file system's contents.
const char* const SOURCE = "/nonexistent-orv-fuzz/fuzz.mof";

struct Outcome
{
    bool ok = false;
    int line = 0;
    std::string message;
    std::size_t classes = 0, qualifierDecls = 0, instances = 0;
};

[[noreturn]] void _fail(const char* what, const std::string& detail)
{
    fprintf(stderr, "MOF compiler property broken: %s\n%s\n", what, detail.c_str());
    abort();
}

Outcome _compile(const std::string& text, ClassRepository& repo)
{
    Outcome out;
    MofCompiler compiler(repo);
    try
    {
        compiler.compileString(text, SOURCE, CIMNamespaceName("root/fuzz"));
        out.ok = true;
    }
    catch (const MofError& e)
    {
        out.line = e.line();
        out.message = e.message();
        if (e.file() != SOURCE)
        {
            _fail("error names another file", e.what());
        }
    }
    catch (const std::exception& e)
    {
        _fail("std::exception escaped", e.what());
    }
    catch (const Exception& e)
    {
        _fail("CIM exception escaped", (const char*)e.getMessage().getCString());
    }
    out.classes = compiler.classCount();
    out.qualifierDecls = compiler.qualifierDeclCount();
    out.instances = compiler.instances().size();
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);

    std::vector<mof::Production> productions;
    bool parsed = true;
    try
    {
        productions = mof::parseMof(text, SOURCE);
    }
    catch (const MofError&)
    {
        parsed = false;
    }
    std::size_t classes = 0, qualifierDecls = 0, instances = 0;
    for (const mof::Production& p : productions)
    {
        // An absolute include would read whatever the fuzzer names
        // (/dev/zero, a FIFO): not the compiler's business.
        if (p.kind == mof::Production::PRAGMA && !p.pragma.arguments.empty() &&
            !p.pragma.arguments[0].empty() && p.pragma.arguments[0][0] == '/')
        {
            return 0;
        }
        classes += p.kind == mof::Production::CLASS;
        qualifierDecls += p.kind == mof::Production::QUALIFIER_DECL;
        instances += p.kind == mof::Production::INSTANCE;
    }

    ClassRepository first, second;
    Outcome a = _compile(text, first);
    Outcome b = _compile(text, second);
    if (a.ok != b.ok || a.line != b.line || a.message != b.message || a.classes != b.classes ||
        a.instances != b.instances)
    {
        _fail("two compiles of one text differ", a.message + " / " + b.message);
    }
    if (!a.ok)
    {
        const int lines = static_cast<int>(std::count(text.begin(), text.end(), '\n')) + 1;
        if (a.line < 1 || a.line > lines)
        {
            _fail("error line outside the text", std::to_string(a.line) + ": " + a.message);
        }
        return 0;
    }
    if (!parsed)
    {
        _fail("compiled a text the parser refuses", text);
    }
    if (a.classes != classes || a.qualifierDecls != qualifierDecls || a.instances != instances)
    {
        _fail("counts differ from the declarations",
              std::to_string(a.classes) + "/" + std::to_string(classes) + " classes, " +
                  std::to_string(a.qualifierDecls) + "/" + std::to_string(qualifierDecls) +
                  " qualifiers, " + std::to_string(a.instances) + "/" + std::to_string(instances) +
                  " instances");
    }
    std::string ns = "root/fuzz";
    for (const mof::Production& p : productions)
    {
        if (p.kind == mof::Production::PRAGMA && p.pragma.name.size() == 9 &&
            strcasecmp(p.pragma.name.c_str(), "namespace") == 0)
        {
            ns = p.pragma.arguments.back();
        }
        if (p.kind != mof::Production::CLASS)
        {
            continue;
        }
        try
        {
            first.getClass(CIMNamespaceName(String(ns.c_str())),
                           CIMName(String(p.classDecl.name.c_str())), false, true, true,
                           CIMPropertyList());
        }
        catch (const Exception&)
        {
            _fail("compiled class not readable", ns + ":" + p.classDecl.name);
        }
    }
    return 0;
}
