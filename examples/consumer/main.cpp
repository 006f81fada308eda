// Uses the installed library through its umbrella header alone: writes a small XML document,
// parses a JSON reply with an array and a date, and compares versions. Exits non-zero when any
// result differs from what the library is known to produce.
#include <corvane/soa/runtime.hpp>

#include <iostream>
#include <sstream>
#include <string>

namespace Common = Corvane::Soa::Common;
namespace Json = Corvane::Soa::Internal::Json;
namespace Xml = Corvane::Soa::Common::Xml;

namespace {

int failures = 0;

void expect(bool ok, const std::string& what) {
    if (!ok) {
        std::cerr << "consumer: " << what << '\n';
        ++failures;
    }
}

void writeXml() {
    std::ostringstream out;
    {
        Xml::XmlStream stream(&out);
        stream.addNamespace("http://corvane.com/Schemas/Core/2006-03/Session");
        stream.writeOpenElement("http://corvane.com/Schemas/Core/2006-03/Session", "Ping", {});
        stream.writeStringElement("text", Xml::toXmlString("fish & chips"));
        stream.writeCloseElement("http://corvane.com/Schemas/Core/2006-03/Session", "Ping");
    }
    std::cout << out.str() << '\n';
    expect(out.str() ==
               "\n<ns0:Ping xmlns:ns0=\"http://corvane.com/Schemas/Core/2006-03/Session\">"
               "<text>fish &amp; chips</text></ns0:Ping>",
           "unexpected XML output");
}

void readJson() {
    Json::Parser parser;
    const Common::AutoPtr<Json::Value> root =
        parser.parse(R"({"names": ["a", "b"], "since": "2016-12-05T14:03:09+01:00"})");
    const Common::AutoPtr<Json::JSONObject> object = root.dynamicCast<Json::JSONObject>();
    expect(!object.isNull(), "the parsed root is not an object");
    if (object.isNull()) {
        return;
    }
    const Common::AutoPtr<Json::JSONArray> names = object->getJSONArray("names");
    expect(names->size() == 2 && names->getString(1) == "b", "unexpected names array");
    const Common::DateTime since = object->getDate("since");
    const Common::DateTime expected("2016-12-05T14:03:09+01:00");
    expect(since.toString() == expected.toString(), "unexpected date " + since.toString());
    std::cout << "names: " << names->size() << ", since " << since.toString() << '\n';
}

void compareVersions() {
    const Common::Version older("10.1.2");
    const Common::Version newer(10, 2, 0);
    expect(older < newer && newer.getMinor() == 2, "unexpected version order");
    std::cout << "runtime " << Common::Version::getCorvaneVersionLabel() << '\n';
}

}  // namespace

int main() {
    writeXml();
    readJson();
    compareVersions();
    return failures == 0 ? 0 : 1;
}
