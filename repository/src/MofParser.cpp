#include "MofParser.h"

#include <cimrepo/MofError.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <limits>

namespace cimrepo
{
namespace mof
{
namespace
{

struct Token
{
    enum Kind
    {
        END,
        IDENT,
        ALIAS,
        STRING,
        CHAR,
        INTEGER,
        REAL,
        PUNCT,
        PRAGMA
    };

    Kind kind = END;
    int line = 0;
    std::string text; // IDENT, ALIAS, STRING (UTF-8); PUNCT as one character
    bool negative = false;
    std::uint64_t magnitude = 0;
    double real = 0.0;
    std::uint16_t character = 0;
};

bool equalNoCase(const std::string& a, const char* b)
{
    std::size_t i = 0;
    for (; i < a.size() && b[i]; ++i)
    {
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i])))
        {
            return false;
        }
    }
    return i == a.size() && b[i] == '\0';
}

bool isIdentStart(char c)
{
    unsigned char u = static_cast<unsigned char>(c);
    return std::isalpha(u) || c == '_' || u >= 0x80;
}

bool isIdentChar(char c)
{
    return isIdentStart(c) || std::isdigit(static_cast<unsigned char>(c));
}

void appendUtf8(std::string& out, unsigned code)
{
    if (code < 0x80)
    {
        out += static_cast<char>(code);
    }
    else if (code < 0x800)
    {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

class Lexer
{
public:
    Lexer(const std::string& text, const std::string& file) : _text(text), _file(file) {}

    Token next()
    {
        _skipSpaceAndComments();
        Token t;
        t.line = _line;
        if (_pos >= _text.size())
        {
            return t;
        }
        char c = _text[_pos];
        if (c == '#')
        {
            ++_pos;
            std::size_t start = _pos;
            while (_pos < _text.size() && isIdentChar(_text[_pos]))
            {
                ++_pos;
            }
            if (!equalNoCase(_text.substr(start, _pos - start), "pragma"))
            {
                _fail("expected 'pragma' after '#'");
            }
            t.kind = Token::PRAGMA;
            return t;
        }
        if (c == '"')
        {
            t.kind = Token::STRING;
            t.text = _string();
            return t;
        }
        if (c == '\'')
        {
            t.kind = Token::CHAR;
            t.character = _char();
            return t;
        }
        if (c == '$')
        {
            ++_pos;
            std::size_t start = _pos;
            while (_pos < _text.size() && isIdentChar(_text[_pos]))
            {
                ++_pos;
            }
            if (start == _pos)
            {
                _fail("expected an alias name after '$'");
            }
            t.kind = Token::ALIAS;
            t.text = _text.substr(start, _pos - start);
            return t;
        }
        if (_startsNumber())
        {
            _number(t);
            return t;
        }
        if (isIdentStart(c))
        {
            std::size_t start = _pos;
            while (_pos < _text.size() && isIdentChar(_text[_pos]))
            {
                ++_pos;
            }
            t.kind = Token::IDENT;
            t.text = _text.substr(start, _pos - start);
            return t;
        }
        static const std::string punct = "{}[](),;:=";
        if (punct.find(c) != std::string::npos)
        {
            ++_pos;
            t.kind = Token::PUNCT;
            t.text = std::string(1, c);
            return t;
        }
        _fail(std::string("unexpected character '") + c + "'");
        return t;
    }

private:
    [[noreturn]] void _fail(const std::string& message)
    {
        throw MofError(_file, _line, message);
    }

    char _at(std::size_t i) const
    {
        return i < _text.size() ? _text[i] : '\0';
    }

    void _skipSpaceAndComments()
    {
        while (_pos < _text.size())
        {
            char c = _text[_pos];
            if (c == '\n')
            {
                ++_line;
                ++_pos;
            }
            else if (std::isspace(static_cast<unsigned char>(c)))
            {
                ++_pos;
            }
            else if (c == '/' && _at(_pos + 1) == '/')
            {
                while (_pos < _text.size() && _text[_pos] != '\n')
                {
                    ++_pos;
                }
            }
            else if (c == '/' && _at(_pos + 1) == '*')
            {
                int startLine = _line;
                _pos += 2;
                while (_pos < _text.size() && !(_text[_pos] == '*' && _at(_pos + 1) == '/'))
                {
                    if (_text[_pos] == '\n')
                    {
                        ++_line;
                    }
                    ++_pos;
                }
                if (_pos >= _text.size())
                {
                    throw MofError(_file, startLine, "expected '*/' to close the comment");
                }
                _pos += 2;
            }
            else
            {
                break;
            }
        }
    }

    // One escape sequence after the backslash; answers a UCS-2 code.
    unsigned _escape()
    {
        char e = _at(_pos);
        ++_pos;
        switch (e)
        {
        case 'b':
            return '\b';
        case 't':
            return '\t';
        case 'n':
            return '\n';
        case 'f':
            return '\f';
        case 'r':
            return '\r';
        case '"':
            return '"';
        case '\'':
            return '\'';
        case '\\':
            return '\\';
        case 'x':
        case 'X':
        {
            unsigned code = 0;
            int digits = 0;
            while (digits < 4 && std::isxdigit(static_cast<unsigned char>(_at(_pos))))
            {
                char h = _text[_pos++];
                code = code * 16 + (std::isdigit(static_cast<unsigned char>(h))
                                        ? h - '0'
                                        : std::tolower(static_cast<unsigned char>(h)) - 'a' + 10);
                ++digits;
            }
            if (digits == 0)
            {
                _fail("expected hexadecimal digits after '\\x'");
            }
            return code;
        }
        default:
            _fail("expected a valid escape sequence");
        }
    }

    std::string _string()
    {
        ++_pos; // opening quote
        std::string out;
        for (;;)
        {
            if (_pos >= _text.size() || _text[_pos] == '\n')
            {
                _fail("expected '\"' to close the string");
            }
            char c = _text[_pos++];
            if (c == '"')
            {
                return out;
            }
            if (c == '\\')
            {
                appendUtf8(out, _escape());
            }
            else
            {
                out += c;
            }
        }
    }

    std::uint16_t _char()
    {
        ++_pos;
        unsigned code;
        char c = _at(_pos);
        if (c == '\\')
        {
            ++_pos;
            code = _escape();
        }
        else if (c == '\'' || c == '\n' || c == '\0')
        {
            _fail("expected a character between quotes");
        }
        else
        {
            code = static_cast<unsigned char>(c);
            ++_pos;
        }
        if (_at(_pos) != '\'')
        {
            _fail("expected \"'\" to close the character");
        }
        ++_pos;
        return static_cast<std::uint16_t>(code);
    }

    bool _startsNumber() const
    {
        char c = _at(_pos);
        if (std::isdigit(static_cast<unsigned char>(c)))
        {
            return true;
        }
        if (c == '+' || c == '-')
        {
            char d = _at(_pos + 1);
            return std::isdigit(static_cast<unsigned char>(d)) ||
                   (d == '.' && std::isdigit(static_cast<unsigned char>(_at(_pos + 2))));
        }
        return c == '.' && std::isdigit(static_cast<unsigned char>(_at(_pos + 1)));
    }

    void _number(Token& t)
    {
        std::size_t start = _pos;
        if (_at(_pos) == '+' || _at(_pos) == '-')
        {
            t.negative = _at(_pos) == '-';
            ++_pos;
        }
        std::size_t digitsStart = _pos;
        int base = 10;
        std::string digits;
        if (_at(_pos) == '0' && (_at(_pos + 1) == 'x' || _at(_pos + 1) == 'X'))
        {
            _pos += 2;
            while (std::isxdigit(static_cast<unsigned char>(_at(_pos))))
            {
                digits += _text[_pos++];
            }
            if (digits.empty())
            {
                _fail("expected hexadecimal digits after '0x'");
            }
            base = 16;
        }
        else
        {
            while (std::isdigit(static_cast<unsigned char>(_at(_pos))))
            {
                digits += _text[_pos++];
            }
            char c = _at(_pos);
            if (c == '.' || c == 'e' || c == 'E')
            {
                _real(t, start);
                return;
            }
            if ((c == 'b' || c == 'B') && !isIdentChar(_at(_pos + 1)) &&
                digits.find_first_not_of("01") == std::string::npos)
            {
                ++_pos;
                base = 2;
            }
            else if (digits.size() > 1 && digits[0] == '0')
            {
                if (digits.find_first_not_of("01234567") != std::string::npos)
                {
                    throw MofError(_file, t.line, "expected octal digits after a leading '0'");
                }
                base = 8;
            }
        }
        if (isIdentChar(_at(_pos)))
        {
            throw MofError(_file, t.line,
                           "expected a number, found '" +
                               _text.substr(digitsStart, _pos + 1 - digitsStart) + "'");
        }
        std::uint64_t value = 0;
        for (char d : digits)
        {
            unsigned v = std::isdigit(static_cast<unsigned char>(d))
                             ? d - '0'
                             : std::tolower(static_cast<unsigned char>(d)) - 'a' + 10;
            if (value > (std::numeric_limits<std::uint64_t>::max() - v) / base)
            {
                throw MofError(_file, t.line, "integer value out of range");
            }
            value = value * base + v;
        }
        t.kind = Token::INTEGER;
        t.magnitude = value;
    }

    void _real(Token& t, std::size_t start)
    {
        if (_at(_pos) == '.')
        {
            ++_pos;
            if (!std::isdigit(static_cast<unsigned char>(_at(_pos))))
            {
                throw MofError(_file, t.line, "expected digits after the decimal point");
            }
            while (std::isdigit(static_cast<unsigned char>(_at(_pos))))
            {
                ++_pos;
            }
        }
        if (_at(_pos) == 'e' || _at(_pos) == 'E')
        {
            ++_pos;
            if (_at(_pos) == '+' || _at(_pos) == '-')
            {
                ++_pos;
            }
            if (!std::isdigit(static_cast<unsigned char>(_at(_pos))))
            {
                throw MofError(_file, t.line, "expected digits in the exponent");
            }
            while (std::isdigit(static_cast<unsigned char>(_at(_pos))))
            {
                ++_pos;
            }
        }
        if (isIdentChar(_at(_pos)))
        {
            throw MofError(_file, t.line, "expected a real number");
        }
        std::string text = _text.substr(start, _pos - start);
        errno = 0;
        t.real = std::strtod(text.c_str(), nullptr);
        if (errno == ERANGE)
        {
            throw MofError(_file, t.line, "real value out of range");
        }
        t.kind = Token::REAL;
    }

    const std::string& _text;
    const std::string& _file;
    std::size_t _pos = 0;
    int _line = 1;
};

const char* const intrinsicTypes[] = {"boolean", "string", "char16", "datetime", "uint8",
                                      "sint8",   "uint16", "sint16", "uint32",   "sint32",
                                      "uint64",  "sint64", "real32", "real64"};

const char* const flavorNames[] = {"EnableOverride", "DisableOverride", "Restricted",
                                   "ToSubclass",     "ToInstance",      "Translatable"};

const char* const scopeNames[] = {"class",     "association", "indication", "qualifier", "property",
                                  "reference", "method",      "parameter",  "any"};

template <std::size_t N> const char* findNoCase(const char* const (&names)[N], const std::string& s)
{
    for (const char* n : names)
    {
        if (equalNoCase(s, n))
        {
            return n;
        }
    }
    return nullptr;
}

class Parser
{
public:
    Parser(const std::string& text, const std::string& file) : _lexer(text, file), _file(file)
    {
        _tok = _lexer.next();
    }

    std::vector<Production> parse()
    {
        std::vector<Production> out;
        while (_tok.kind != Token::END)
        {
            out.push_back(_production());
        }
        return out;
    }

private:
    // ---- token helpers

    void _advance()
    {
        _prevLine = _tok.line;
        _tok = _lexer.next();
    }

    std::string _describe(const Token& t) const
    {
        switch (t.kind)
        {
        case Token::END:
            return "end of file";
        case Token::IDENT:
        case Token::PUNCT:
            return "'" + t.text + "'";
        case Token::ALIAS:
            return "'$" + t.text + "'";
        case Token::STRING:
            return "a string";
        case Token::CHAR:
            return "a character";
        case Token::INTEGER:
        case Token::REAL:
            return "a number";
        case Token::PRAGMA:
            return "'#pragma'";
        }
        return "?";
    }

    [[noreturn]] void _expected(const std::string& what, bool atPrevious = false)
    {
        throw MofError(_file, atPrevious ? _prevLine : _tok.line,
                       "expected " + what + ", found " + _describe(_tok));
    }

    bool _isPunct(char c) const
    {
        return _tok.kind == Token::PUNCT && _tok.text[0] == c;
    }

    bool _isWord(const char* w) const
    {
        return _tok.kind == Token::IDENT && equalNoCase(_tok.text, w);
    }

    void _expectPunct(char c)
    {
        if (!_isPunct(c))
        {
            // A missing terminator belongs to the line that lacks it, not to the next one.
            _expected(std::string("'") + c + "'", c == ';');
        }
        _advance();
    }

    bool _acceptPunct(char c)
    {
        if (_isPunct(c))
        {
            _advance();
            return true;
        }
        return false;
    }

    void _expectWord(const char* w)
    {
        if (!_isWord(w))
        {
            _expected(std::string("'") + w + "'");
        }
        _advance();
    }

    std::string _identifier(const char* what)
    {
        if (_tok.kind != Token::IDENT)
        {
            _expected(what);
        }
        std::string s = _tok.text;
        _advance();
        return s;
    }

    std::string _stringLiteral()
    {
        if (_tok.kind != Token::STRING)
        {
            _expected("a string");
        }
        std::string s;
        while (_tok.kind == Token::STRING)
        {
            s += _tok.text;
            _advance();
        }
        return s;
    }

    std::string _dataType()
    {
        if (_tok.kind != Token::IDENT || !findNoCase(intrinsicTypes, _tok.text))
        {
            _expected("a data type");
        }
        std::string t = findNoCase(intrinsicTypes, _tok.text);
        _advance();
        return t;
    }

    // "[" [size] "]" after a name; answers whether it was there.
    bool _arraySpec(std::uint32_t& size)
    {
        if (!_acceptPunct('['))
        {
            return false;
        }
        size = 0;
        if (_tok.kind == Token::INTEGER)
        {
            if (_tok.negative || _tok.magnitude == 0 ||
                _tok.magnitude > std::numeric_limits<std::uint32_t>::max())
            {
                _expected("a positive array size");
            }
            size = static_cast<std::uint32_t>(_tok.magnitude);
            _advance();
        }
        _expectPunct(']');
        return true;
    }

    // ---- values

    Literal _constantValue()
    {
        Literal l;
        l.line = _tok.line;
        switch (_tok.kind)
        {
        case Token::INTEGER:
            l.kind = Literal::INTEGER;
            l.negative = _tok.negative;
            l.magnitude = _tok.magnitude;
            _advance();
            return l;
        case Token::REAL:
            l.kind = Literal::REAL;
            l.real = _tok.real;
            _advance();
            return l;
        case Token::STRING:
            l.kind = Literal::STRING;
            l.text = _stringLiteral(); // adjacent literals concatenate
            return l;
        case Token::CHAR:
            l.kind = Literal::CHAR;
            l.character = _tok.character;
            _advance();
            return l;
        case Token::ALIAS:
            l.kind = Literal::ALIAS;
            l.text = _tok.text;
            _advance();
            return l;
        case Token::IDENT:
            if (_isWord("true") || _isWord("false"))
            {
                l.kind = Literal::BOOLEAN;
                l.boolean = _isWord("true");
                _advance();
                return l;
            }
            if (_isWord("null"))
            {
                l.kind = Literal::NUL;
                _advance();
                return l;
            }
            break;
        default:
            break;
        }
        _expected("a value");
    }

    Literal _initializer()
    {
        if (!_isPunct('{'))
        {
            return _constantValue();
        }
        Literal l;
        l.kind = Literal::ARRAY;
        l.line = _tok.line;
        _advance();
        if (!_isPunct('}'))
        {
            do
            {
                l.elements.push_back(_constantValue());
            } while (_acceptPunct(','));
        }
        _expectPunct('}');
        return l;
    }

    // ---- qualifiers

    std::vector<std::string> _flavorList()
    {
        std::vector<std::string> out;
        do
        {
            const char* f =
                _tok.kind == Token::IDENT ? findNoCase(flavorNames, _tok.text) : nullptr;
            if (!f)
            {
                _expected("a flavor");
            }
            out.push_back(f);
            _advance();
        } while (_acceptPunct(','));
        return out;
    }

    QualifierList _qualifierList()
    {
        QualifierList list;
        if (!_acceptPunct('['))
        {
            return list;
        }
        do
        {
            QualifierNode q;
            q.line = _tok.line;
            q.name = _identifier("a qualifier name");
            if (_acceptPunct('('))
            {
                q.value = _initializer();
                _expectPunct(')');
            }
            else if (_isPunct('{'))
            {
                q.value = _initializer();
            }
            if (_acceptPunct(':'))
            {
                // Flavors after a qualifier are blank-separated, so stop at ',' or ']'.
                do
                {
                    const char* f =
                        _tok.kind == Token::IDENT ? findNoCase(flavorNames, _tok.text) : nullptr;
                    if (!f)
                    {
                        _expected("a flavor");
                    }
                    q.flavors.push_back(f);
                    _advance();
                } while (_tok.kind == Token::IDENT);
            }
            list.push_back(q);
        } while (_acceptPunct(','));
        _expectPunct(']');
        return list;
    }

    // ---- productions

    Production _production()
    {
        Production p;
        if (_tok.kind == Token::PRAGMA)
        {
            p.kind = Production::PRAGMA;
            p.pragma.line = _tok.line;
            _advance();
            p.pragma.name = _identifier("a pragma name");
            _expectPunct('(');
            if (!_isPunct(')'))
            {
                do
                {
                    p.pragma.arguments.push_back(_stringLiteral());
                } while (_acceptPunct(','));
            }
            _expectPunct(')');
            return p;
        }
        int line = _tok.line;
        QualifierList quals = _qualifierList();
        if (_isWord("class"))
        {
            p.kind = Production::CLASS;
            p.classDecl = _classDecl(quals, quals.empty() ? _tok.line : line);
        }
        else if (_isWord("instance"))
        {
            p.kind = Production::INSTANCE;
            p.instance = _instanceDecl(quals, quals.empty() ? _tok.line : line);
        }
        else if (_isWord("qualifier") && quals.empty())
        {
            p.kind = Production::QUALIFIER_DECL;
            p.qualifierDecl = _qualifierDecl();
        }
        else
        {
            _expected(quals.empty() ? "'class', 'instance', 'qualifier' or '#pragma'"
                                    : "'class' or 'instance'");
        }
        return p;
    }

    QualifierDeclNode _qualifierDecl()
    {
        QualifierDeclNode d;
        d.line = _tok.line;
        _advance(); // "qualifier"
        d.name = _identifier("a qualifier name");
        _expectPunct(':');
        d.type = _dataType();
        d.isArray = _arraySpec(d.arraySize);
        if (_acceptPunct('='))
        {
            d.defaultValue = _initializer();
        }
        _expectPunct(',');
        _expectWord("scope");
        _expectPunct('(');
        do
        {
            const char* s = _tok.kind == Token::IDENT ? findNoCase(scopeNames, _tok.text) : nullptr;
            if (!s)
            {
                _expected("a scope");
            }
            d.scopes.push_back(s);
            _advance();
        } while (_acceptPunct(','));
        _expectPunct(')');
        if (_acceptPunct(','))
        {
            _expectWord("flavor");
            _expectPunct('(');
            d.flavors = _flavorList();
            _expectPunct(')');
        }
        _expectPunct(';');
        return d;
    }

    ClassNode _classDecl(const QualifierList& quals, int line)
    {
        ClassNode c;
        c.qualifiers = quals;
        c.line = line;
        _advance(); // "class"
        c.name = _identifier("a class name");
        if (_isWord("as"))
        {
            _advance();
            if (_tok.kind != Token::ALIAS)
            {
                _expected("an alias");
            }
            c.alias = _tok.text;
            _advance();
        }
        if (_acceptPunct(':'))
        {
            c.superClass = _identifier("a superclass name");
        }
        _expectPunct('{');
        while (!_isPunct('}'))
        {
            if (_tok.kind == Token::END)
            {
                _expected("'}'");
            }
            c.features.push_back(_feature());
        }
        _advance();
        _expectPunct(';');
        return c;
    }

    FeatureNode _feature()
    {
        FeatureNode f;
        int line = _tok.line;
        f.qualifiers = _qualifierList();
        f.line = f.qualifiers.empty() ? _tok.line : line;
        if (_tok.kind != Token::IDENT)
        {
            _expected("a property, reference or method");
        }
        std::string first = _tok.text;
        _advance();
        if (_isWord("ref"))
        {
            _advance();
            f.kind = FeatureNode::REFERENCE;
            f.type = "ref";
            f.refClass = first;
            f.name = _identifier("a reference name");
            if (_isPunct('['))
            {
                _expected("';'"); // references cannot be arrays
            }
            if (_acceptPunct('='))
            {
                f.defaultValue = _initializer();
            }
            _expectPunct(';');
            return f;
        }
        if (!findNoCase(intrinsicTypes, first))
        {
            throw MofError(_file, _prevLine, "expected a data type, found '" + first + "'");
        }
        f.type = findNoCase(intrinsicTypes, first);
        f.name = _identifier("a property or method name");
        if (_acceptPunct('('))
        {
            f.kind = FeatureNode::METHOD;
            if (!_isPunct(')'))
            {
                do
                {
                    f.parameters.push_back(_parameter());
                } while (_acceptPunct(','));
            }
            _expectPunct(')');
            _expectPunct(';');
            return f;
        }
        f.kind = FeatureNode::PROPERTY;
        f.isArray = _arraySpec(f.arraySize);
        if (_acceptPunct('='))
        {
            f.defaultValue = _initializer();
        }
        _expectPunct(';');
        return f;
    }

    ParameterNode _parameter()
    {
        ParameterNode p;
        int line = _tok.line;
        p.qualifiers = _qualifierList();
        p.line = p.qualifiers.empty() ? _tok.line : line;
        if (_tok.kind != Token::IDENT)
        {
            _expected("a parameter type");
        }
        std::string first = _tok.text;
        _advance();
        if (_isWord("ref"))
        {
            _advance();
            p.type = "ref";
            p.refClass = first;
        }
        else if (findNoCase(intrinsicTypes, first))
        {
            p.type = findNoCase(intrinsicTypes, first);
        }
        else
        {
            throw MofError(_file, _prevLine, "expected a data type, found '" + first + "'");
        }
        p.name = _identifier("a parameter name");
        p.isArray = _arraySpec(p.arraySize);
        return p;
    }

    InstanceNode _instanceDecl(const QualifierList& quals, int line)
    {
        InstanceNode i;
        i.qualifiers = quals;
        i.line = line;
        _advance(); // "instance"
        _expectWord("of");
        i.className = _identifier("a class name");
        if (_isWord("as"))
        {
            _advance();
            if (_tok.kind != Token::ALIAS)
            {
                _expected("an alias");
            }
            i.alias = _tok.text;
            _advance();
        }
        _expectPunct('{');
        while (!_isPunct('}'))
        {
            PropertyValueNode v;
            int vline = _tok.line;
            v.qualifiers = _qualifierList();
            v.line = v.qualifiers.empty() ? _tok.line : vline;
            v.name = _identifier("a property name or '}'");
            _expectPunct('=');
            v.value = _initializer();
            _expectPunct(';');
            i.values.push_back(v);
        }
        _advance();
        _expectPunct(';');
        return i;
    }

    Lexer _lexer;
    const std::string& _file;
    Token _tok;
    int _prevLine = 1;
};

} // namespace

std::vector<Production> parseMof(const std::string& text, const std::string& fileName)
{
    Parser parser(text, fileName);
    return parser.parse();
}

} // namespace mof
} // namespace cimrepo
