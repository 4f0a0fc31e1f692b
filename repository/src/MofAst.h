#ifndef CIMREPO_MOFAST_H
#define CIMREPO_MOFAST_H

// Syntax tree of one MOF file. It keeps literals untyped: their CIM type comes from the
// qualifier declaration or the class they are assigned to, which only the compiler knows.

#include <cstdint>
#include <string>
#include <vector>

namespace cimrepo
{
namespace mof
{

struct Literal
{
    enum Kind
    {
        NONE, // no value given at all
        INTEGER,
        REAL,
        STRING,
        CHAR,
        BOOLEAN,
        NUL,
        ALIAS,
        ARRAY
    };

    Kind kind = NONE;
    int line = 0;
    bool negative = false;         // INTEGER: sign, magnitude kept apart so sint64 min fits
    std::uint64_t magnitude = 0;   // INTEGER
    double real = 0.0;             // REAL
    std::string text;              // STRING (UTF-8), ALIAS name without '$'
    std::uint16_t character = 0;   // CHAR
    bool boolean = false;          // BOOLEAN
    std::vector<Literal> elements; // ARRAY

    bool isNone() const
    {
        return kind == NONE;
    }
};

struct QualifierNode
{
    std::string name;
    Literal value; // NONE when written without a parameter
    std::vector<std::string> flavors;
    int line = 0;
};

using QualifierList = std::vector<QualifierNode>;

struct ParameterNode
{
    QualifierList qualifiers;
    std::string type;     // intrinsic type name, or "ref" for a reference
    std::string refClass; // for references
    std::string name;
    bool isArray = false;
    std::uint32_t arraySize = 0;
    int line = 0;
};

struct FeatureNode
{
    enum Kind
    {
        PROPERTY,
        REFERENCE,
        METHOD
    };

    Kind kind = PROPERTY;
    QualifierList qualifiers;
    std::string type; // intrinsic type name (return type for methods)
    std::string refClass;
    std::string name;
    bool isArray = false;
    std::uint32_t arraySize = 0;
    Literal defaultValue;
    std::vector<ParameterNode> parameters;
    int line = 0;
};

struct ClassNode
{
    QualifierList qualifiers;
    std::string name;
    std::string superClass;
    std::string alias;
    std::vector<FeatureNode> features;
    int line = 0;
};

struct QualifierDeclNode
{
    std::string name;
    std::string type;
    bool isArray = false;
    std::uint32_t arraySize = 0;
    Literal defaultValue;
    std::vector<std::string> scopes;
    std::vector<std::string> flavors;
    int line = 0;
};

struct PropertyValueNode
{
    QualifierList qualifiers;
    std::string name;
    Literal value;
    int line = 0;
};

struct InstanceNode
{
    QualifierList qualifiers;
    std::string className;
    std::string alias;
    std::vector<PropertyValueNode> values;
    int line = 0;
};

struct PragmaNode
{
    std::string name;
    std::vector<std::string> arguments;
    int line = 0;
};

struct Production
{
    enum Kind
    {
        PRAGMA,
        QUALIFIER_DECL,
        CLASS,
        INSTANCE
    };

    Kind kind = PRAGMA;
    PragmaNode pragma;
    QualifierDeclNode qualifierDecl;
    ClassNode classDecl;
    InstanceNode instance;
};

} // namespace mof
} // namespace cimrepo

#endif
