// orv-mofcheck: compiles MOF files into a scratch repository and reports the first error, or a
// summary of what the files declare. Used by CI and by anyone editing MOF.

#include <cimrepo/ClassRepository.h>
#include <cimrepo/MofCompiler.h>

#include <Pegasus/Common/Exception.h>

#include <cctype>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

using namespace Pegasus;

namespace
{

std::string lowerCase(std::string text)
{
    for (char& c : text)
    {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return text;
}

const char* const usage =
    "usage: orv-mofcheck [-v] [-n NAMESPACE] FILE.mof...\n"
    "       orv-mofcheck [-v] --manifest LOAD-ORDER.txt [--root DIR] [--interop-mof FILE]\n"
    "Compiles the files in order into a scratch class repository (default namespace root/orv).\n"
    "A manifest lists \"<namespace-or-registration> <path>\" per line, paths relative to --root\n"
    "(default: the manifest's parent directory's parent); registration MOF goes into\n"
    "root/PG_InterOp after --interop-mof (default "
    "<root>/host/om/mof/PG_ProviderRegistration.mof, itself after <root>/schema/qualifiers.mof\n"
    "and <root>/schema/CIM_Core.mof).\n"
    "Exit status 0 when everything compiles, 1 on a MOF error, 2 on bad usage.\n";

std::string text(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

std::string parentDir(const std::string& path)
{
    std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos)
    {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

struct Job
{
    std::string nameSpace;
    std::string path;
};

bool readManifest(const std::string& manifest, const std::string& root,
                  const std::string& interopMof, std::vector<Job>& jobs)
{
    std::ifstream in(manifest);
    if (!in)
    {
        std::cerr << manifest << ":0: cannot open the file\n";
        return false;
    }
    bool interopLoaded = false;
    std::string line;
    int number = 0;
    while (std::getline(in, line))
    {
        ++number;
        std::string::size_type hash = line.find('#');
        if (hash != std::string::npos)
        {
            line.erase(hash);
        }
        std::istringstream fields(line);
        std::string ns, path, extra;
        if (!(fields >> ns))
        {
            continue;
        }
        if (!(fields >> path) || (fields >> extra))
        {
            std::cerr << manifest << ":" << number << ": expected '<namespace> <path>'\n";
            return false;
        }
        if (ns == "registration")
        {
            ns = "root/PG_InterOp";
        }
        // The object manager puts its registration classes, on the schema's
        // qualifiers and core classes, into the interop namespace before
        // anything else goes there.
        if (!interopLoaded && !interopMof.empty() && lowerCase(ns) == "root/pg_interop")
        {
            jobs.push_back({ns, root + "/schema/qualifiers.mof"});
            jobs.push_back({ns, root + "/schema/CIM_Core.mof"});
            jobs.push_back({ns, interopMof});
            interopLoaded = true;
        }
        jobs.push_back({ns, path[0] == '/' ? path : root + "/" + path});
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    std::string nameSpace = "root/orv";
    std::string manifest, root, interopMof;
    bool interopGiven = false;
    bool verbose = false;
    std::vector<Job> jobs;

    for (std::size_t i = 0; i < args.size(); ++i)
    {
        const std::string& a = args[i];
        bool hasNext = i + 1 < args.size();
        if (a == "-h" || a == "--help")
        {
            std::cout << usage;
            return 0;
        }
        if (a == "-v")
        {
            verbose = true;
        }
        else if (a == "-n" && hasNext)
        {
            nameSpace = args[++i];
        }
        else if (a == "--manifest" && hasNext)
        {
            manifest = args[++i];
        }
        else if (a == "--root" && hasNext)
        {
            root = args[++i];
        }
        else if (a == "--interop-mof" && hasNext)
        {
            interopMof = args[++i];
            interopGiven = true;
        }
        else if (!a.empty() && a[0] == '-')
        {
            std::cerr << usage;
            return 2;
        }
        else
        {
            jobs.push_back({nameSpace, a});
        }
    }
    if (!manifest.empty())
    {
        if (root.empty())
        {
            root = parentDir(parentDir(manifest));
        }
        if (!interopGiven)
        {
            interopMof = root + "/host/om/mof/PG_ProviderRegistration.mof";
            if (!std::ifstream(interopMof))
            {
                interopMof.clear();
            }
        }
        if (!readManifest(manifest, root, interopMof, jobs))
        {
            return 1;
        }
    }
    if (jobs.empty())
    {
        std::cerr << usage;
        return 2;
    }

    cimrepo::ClassRepository repository;
    cimrepo::MofCompiler compiler(repository);
    try
    {
        for (const Job& job : jobs)
        {
            if (verbose)
            {
                std::cout << "compiling " << job.path << " into " << job.nameSpace << "\n";
            }
            compiler.compileFile(job.path, CIMNamespaceName(String(job.nameSpace.c_str())));
        }
    }
    catch (const cimrepo::MofError& e)
    {
        std::cerr << e.what() << "\n";
        return 1;
    }
    catch (const Exception& e)
    {
        std::cerr << "error: " << text(e.getMessage()) << "\n";
        return 1;
    }

    Array<CIMNamespaceName> namespaces = repository.enumerateNamespaces();
    for (Uint32 i = 0; i < namespaces.size(); ++i)
    {
        Array<CIMName> classes = repository.enumerateClassNames(namespaces[i], CIMName(), true);
        std::size_t instances = 0;
        for (const cimrepo::MofInstance& m : compiler.instances())
        {
            instances += m.nameSpace.equal(namespaces[i]) ? 1 : 0;
        }
        std::cout << text(namespaces[i].getString()) << ": "
                  << repository.enumerateQualifierDecls(namespaces[i]).size()
                  << " qualifier declarations, " << classes.size() << " classes, " << instances
                  << " instances\n";
        if (verbose)
        {
            for (Uint32 k = 0; k < classes.size(); ++k)
            {
                std::cout << "  " << text(classes[k].getString()) << "\n";
            }
        }
    }
    std::cout << "OK: " << jobs.size() << " file(s) compiled\n";
    return 0;
}
