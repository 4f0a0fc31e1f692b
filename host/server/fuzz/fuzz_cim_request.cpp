// libFuzzer harness: one HTTP request (method, URL, headers, body) through
// the CIM-XML decoder, the operation processor and the response encoder.
//
// Input layout: "<METHOD> <URL>\n", header lines "Name: value\n", an empty
// line, then the body. Beyond "no crash, no leak", every answer must be a
// response a client can read: a known status, header values without line
// breaks, and a well-formed XML document for each CIM answer.

#include "CimOperationProcessor.h"
#include "EchoDispatcher.h"

#include <libxml/parser.h>

#include <cstdlib>
#include <cstdint>
#include <cstdio>
#include <string>

namespace
{
orvhost::HttpRequest _decode(const std::string& data)
{
    orvhost::HttpRequest request;
    size_t pos = 0;
    auto nextLine = [&](std::string& line) {
        if (pos >= data.size())
        {
            return false;
        }
        size_t end = data.find('\n', pos);
        if (end == std::string::npos)
        {
            end = data.size();
        }
        line = data.substr(pos, end - pos);
        pos = end + 1;
        return true;
    };
    std::string line;
    if (nextLine(line))
    {
        size_t space = line.find(' ');
        request.method = line.substr(0, space);
        request.url = space == std::string::npos ? "" : line.substr(space + 1);
    }
    while (nextLine(line) && !line.empty())
    {
        size_t colon = line.find(':');
        std::string value = colon == std::string::npos ? "" : line.substr(colon + 1);
        // As the HTTP layer hands them over: without the blanks after the colon.
        value.erase(0, value.find_first_not_of(" \t"));
        request.headers.emplace(line.substr(0, colon), value);
    }
    request.body = pos < data.size() ? data.substr(pos) : "";
    request.user = "fuzz";
    request.peer = "192.0.2.1";
    return request;
}

void _require(bool ok, const char* what, const orvhost::HttpResponse& response)
{
    if (!ok)
    {
        fprintf(stderr, "broken response (%s): status %d\n%s\n", what, response.status,
                response.body.c_str());
        abort();
    }
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    orvhost::initXmlLibrary();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static orvhost::fuzzing::EchoDispatcher dispatcher;
    // Strings a provider may hand back: CDATA terminators, control
    // characters, markup.
    dispatcher.extra = Pegasus::String("]]><x a=\"'&amp;\x01\x1f\x7f");
    static orvhost::CimOperationProcessor processor(dispatcher, "fuzzhost");

    orvhost::HttpRequest request = _decode(std::string(reinterpret_cast<const char*>(data), size));
    orvhost::HttpResponse response = processor.handle(request);

    _require(response.status == 200 || response.status == 400 || response.status == 404 ||
                 response.status == 501,
             "status", response);
    for (const auto& header : response.headers)
    {
        _require(header.second.find_first_of("\r\n") == std::string::npos &&
                     header.first.find_first_of("\r\n: ") == std::string::npos,
                 "header", response);
    }
    if (response.status == 200)
    {
        xmlDoc* doc = xmlReadMemory(response.body.data(), static_cast<int>(response.body.size()),
                                    "response.xml", nullptr,
                                    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
        _require(doc != nullptr, "not well-formed XML", response);
        xmlFreeDoc(doc);
    }
    return 0;
}
