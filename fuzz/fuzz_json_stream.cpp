// Drives the JSON writer with an operation sequence chosen by the input: whatever the order of
// opens, closes, keys and values, the writer writes and nothing breaks. Some inputs write through
// a Shift_JIS transcoder, whose conversion failures leave the stream usable for the next operation.
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

using Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;
using Corvane::Soa::Common::DateTime;
using Corvane::Soa::Common::Xml::JsonStream;
using Corvane::Soa::Common::Xml::Utf8String;

namespace {

// Reads operation codes and their arguments from the input, giving zeros once it is used up.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
    bool more() const { return m_pos < m_size; }
    std::uint8_t byte() { return m_pos < m_size ? m_data[m_pos++] : 0; }
    std::string text() {
        const std::size_t length = byte() % 24;
        std::string out;
        for (std::size_t i = 0; i < length && more(); ++i) {
            out.push_back(static_cast<char>(byte()));
        }
        return out;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_pos = 0;
};

// One operation chosen by the input.
void step(JsonStream& stream, Input& in) {
    const bool present = (in.byte() & 1U) != 0;
    switch (in.byte() % 36) {
        case 0:
            stream.writeObjectOpen();
            break;
        case 1:
            stream.writeObjectOpen(in.text());
            break;
        case 2:
            stream.writeObjectClose();
            break;
        case 3:
            stream.writeArrayOpen();
            break;
        case 4:
            stream.writeArrayClose();
            break;
        case 5:
            stream.writeMapOpen();
            break;
        case 6:
            stream.writeMapOpen(in.text());
            break;
        case 7:
            stream.writeMapClose();
            break;
        case 8:
            stream.writeKey(in.text());
            break;
        case 9:
            stream.writeKey(static_cast<int>(in.byte()) - 128);
            break;
        case 10:
            stream.writeValue(in.text());
            break;
        case 11:
            stream.writeEncodedValue(in.text());
            break;
        case 12:
            stream.writeValue(present);
            break;
        case 13:
            stream.writeValue(static_cast<int>(in.byte()) * 1000003);
            break;
        case 14:
            stream.writeValue(static_cast<double>(in.byte()) / 7.0);
            break;
        case 15:
            stream.writeValue(static_cast<float>(in.byte()) / 3.0F);
            break;
        case 16:
            stream.writeValue(DateTime(2016, 1 + in.byte() % 12, 1 + in.byte() % 28, 0, 0, 0));
            break;
        case 17:
            stream.writeAttribute(in.text(), in.text(), present);
            break;
        case 18:
            stream.writeAttribute(in.text(), static_cast<int>(in.byte()), present);
            break;
        case 19:
            stream.writeAttribute(in.text(), static_cast<double>(in.byte()), present);
            break;
        case 20:
            stream.writeAttribute(in.text(), (in.byte() & 1U) != 0, present);
            break;
        case 21:
            stream.writeEncodedAttribute(in.text(), in.text());
            break;
        case 22:
            stream.writeObject(in.text(), in.text(), present);
            break;
        case 23:
            stream.writeCommaAndLineFeed();
            break;
        case 24:
            stream.writeVector(std::vector<std::string>{in.text(), in.text()}, in.text());
            break;
        case 25:
            stream.writeEncodedVector(std::vector<std::string>(in.byte() % 3, in.text()),
                                      in.text());
            break;
        case 26:
            stream.writeValue(in.text().c_str());
            break;
        case 27:
            stream.writeAttribute(in.text(), in.text().c_str(), present);
            break;
        case 28:
            stream.writeAttribute(in.text(), static_cast<float>(in.byte()) / 9.0F, present);
            break;
        case 29:
            stream.writeAttribute(in.text(), DateTime(static_cast<std::int64_t>(in.byte()) << 24),
                                  present);
            break;
        case 30:
            stream.writeObject(in.text(), in.text().c_str(), present);
            break;
        case 31:
            stream.writeObject(in.text(), (in.byte() & 1U) != 0, present);
            break;
        case 32:
            stream << in.text();
            break;
        case 33:
            stream << in.text().c_str();
            break;
        case 34:
            stream.writeValue(DateTime());
            break;
        default:
            stream.writeVector(std::vector<std::string>(), in.text());
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Utf8String shiftJis("Shift_JIS");
    Input in(data, size);
    const std::uint8_t setup = in.byte();
    JsonStream::setTabSize(setup % 5);
    std::ostringstream out;
    JsonStream stream(&out, (setup & 0x80U) != 0 ? &shiftJis : nullptr);
    for (int steps = 0; steps < 512 && in.more(); ++steps) {
        try {
            step(stream, in);
        } catch (const InternalServerException&) {
            // Only a transcoding stream may fail, and only on text the page cannot hold.
            if (stream.getUtf8Transcoder() == nullptr) {
                std::abort();
            }
        }
    }
    return 0;
}
