// Any byte string given to the exception mapper returns, throws the reader's DomException or
// throws one of the six service exceptions. A thrown exception, written back as its error
// document, must read back as an equal exception.
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/exceptions/ExceptionMapper.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ConnectionException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidCredentialsException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidUserException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ProtocolException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ServiceException.hpp>

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

namespace {

using ::Corvane::Soa::Common::Exceptions::DomException;
using ::Corvane::Soa::Common::Exceptions::ExceptionMapper;
namespace Soa = ::Corvane::Schemas::Soa::_2006_03::Exceptions;

std::string describe(const Soa::SoaException& e) {
    std::string out = e.getTypeName();
    for (const auto& error : e.getErrors()) {
        out += '|' + error->getMessage() + ',' + std::to_string(error->getCode()) + ',' +
               std::to_string(error->getLevel());
    }
    if (const auto* service = dynamic_cast<const Soa::ServiceException*>(&e)) {
        out += "|uid=" + service->getUid() + "|client=" + service->getClientId();
    }
    if (const auto* user = dynamic_cast<const Soa::InvalidUserException*>(&e)) {
        out += "|response=" + user->getCvResponse();
    }
    return out;
}

// Maps the text; returns the description of the exception thrown, or "" when none was.
std::string map(const std::string& text) {
    try {
        ExceptionMapper::parseExceptionString(text);
    } catch (const Soa::InvalidCredentialsException& e) {
        return describe(e);
    } catch (const Soa::InvalidUserException& e) {
        return describe(e);
    } catch (const Soa::ProtocolException& e) {
        return describe(e);
    } catch (const Soa::ConnectionException& e) {
        return describe(e);
    } catch (const Soa::InternalServerException& e) {
        return describe(e);
    } catch (const Soa::ServiceException& e) {
        return describe(e);
    }
    return std::string();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        ExceptionMapper::parseExceptionString(text);
    } catch (const DomException&) {
    } catch (Soa::SoaException& e) {
        const std::string first = map(text);  // also checks that it is one of the six
        std::ostringstream written;
        ExceptionMapper::writeSoaException(e, written);
        std::string again;
        try {
            again = map(written.str());
        } catch (const DomException&) {
            __builtin_trap();  // a written document must be well formed
        }
        if (again != first) {
            __builtin_trap();
        }
    }
    return 0;
}
