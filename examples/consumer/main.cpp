// Writes a small document through the installed library and checks the bytes it produced.
#include <corvane/soa/runtime.hpp>

#include <iostream>
#include <sstream>

namespace Xml = Corvane::Soa::Common::Xml;

int main() {
    std::ostringstream out;
    {
        Xml::XmlStream stream(&out);
        stream.addNamespace("http://corvane.com/Schemas/Core/2006-03/Session");
        stream.writeOpenElement("http://corvane.com/Schemas/Core/2006-03/Session", "Ping", {});
        stream.writeStringElement("text", Xml::toXmlString("fish & chips"));
        stream.writeCloseElement("http://corvane.com/Schemas/Core/2006-03/Session", "Ping");
    }
    const std::string expected =
        "\n<ns0:Ping xmlns:ns0=\"http://corvane.com/Schemas/Core/2006-03/Session\">"
        "<text>fish &amp; chips</text></ns0:Ping>";
    std::cout << out.str() << '\n';
    if (out.str() != expected) {
        std::cerr << "consumer: unexpected output\n";
        return 1;
    }
    return 0;
}
