#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ConnectionException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/Error.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidCredentialsException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidUserException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ProtocolException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ServiceException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/SoaException.hpp>

#include <gtest/gtest.h>

#include <exception>
#include <set>
#include <string>

namespace {

using Corvane::Soa::Common::AutoPtr;
using Corvane::Soa::Common::Exceptions::DomException;
using Corvane::Soa::Common::Exceptions::IOException;
using Corvane::Soa::Common::Xml::BaseObject;
using namespace Corvane::Schemas::Soa::_2006_03::Exceptions;

constexpr const char* kUri = "http://corvane.com/Schemas/Soa/2006-03/Exceptions";

// Catches `thrown` as `Catch&` and hands it to `check`; fails when it is not caught.
template <class Catch, class Thrown, class Check>
void catchAs(const Thrown& thrown, Check check) {
    try {
        throw thrown;
    } catch (const Catch& caught) {
        check(caught);
        return;
    } catch (...) {
    }
    ADD_FAILURE() << "not caught as the expected type";
}

// The exceptions built from one message, code and level share one behaviour.
template <class T>
void checkMessageException(const std::string& typeName) {
    SCOPED_TRACE(typeName);
    const std::string qualifiedName = std::string(kUri) + "." + typeName;
    const T e("Connection refused", 214004, 3);
    EXPECT_EQ(e.getMessage(), "Connection refused");
    EXPECT_STREQ(e.what(), "Connection refused");
    EXPECT_EQ(e.getCode(), 214004);
    EXPECT_EQ(e.getLevel(), 3);
    EXPECT_EQ(e.getQaulifiedName(), qualifiedName);

    std::set<std::string> namespaces;
    e.getNamespaces(namespaces);
    EXPECT_EQ(namespaces, std::set<std::string>{kUri});

    catchAs<SoaException>(e, [](const SoaException& c) { EXPECT_EQ(c.getLevel(), 3); });
    catchAs<std::exception>(
        e, [](const std::exception& c) { EXPECT_STREQ(c.what(), "Connection refused"); });
    catchAs<BaseObject>(
        e, [&](const BaseObject& c) { EXPECT_EQ(c.getQaulifiedName(), qualifiedName); });

    // A clone is of the same type, carries the error and starts with no holder.
    AutoPtr<BaseObject> copy(e.clone());
    EXPECT_EQ(copy->askRefCount(), 1);
    const AutoPtr<T> typed = copy.template dynamicCast<T>();
    ASSERT_FALSE(typed.isNull());
    EXPECT_EQ(typed->getMessage(), "Connection refused");
}

TEST(MessageExceptions, ShareOneBehaviour) {
    checkMessageException<InternalServerException>("InternalServerException");
    checkMessageException<InvalidCredentialsException>("InvalidCredentialsException");
    checkMessageException<ConnectionException>("ConnectionException");
    checkMessageException<ProtocolException>("ProtocolException");
}

TEST(InternalServerException, KeepsAddedMessagesInOrder) {
    InternalServerException e("first", 1, 1);
    e.addMessage("second", 2, 2);
    e.addError("third", 3, 3);

    const auto& errors = e.getErrors();
    ASSERT_EQ(errors.size(), 3u);
    const char* messages[] = {"first", "second", "third"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(errors[i]->getMessage(), messages[i]);
        EXPECT_EQ(errors[i]->getCode(), i + 1);
        EXPECT_EQ(errors[i]->getLevel(), i + 1);
        EXPECT_EQ(errors[i]->getQaulifiedName(), std::string(kUri) + ".Error");
    }
    EXPECT_EQ(e.getMessage(), "first");  // the first error answers

    // A thrown copy carries every error.
    catchAs<SoaException>(e, [](const SoaException& c) {
        ASSERT_EQ(c.getErrors().size(), 3u);
        EXPECT_EQ(c.getErrors()[2]->getMessage(), "third");
    });
}

TEST(InvalidUserException, TakesCodeLevelMessageAndResponse) {
    const InvalidUserException e(515001, 2, "User unknown", "<response/>");
    EXPECT_EQ(e.getCode(), 515001);
    EXPECT_EQ(e.getLevel(), 2);
    EXPECT_EQ(e.getMessage(), "User unknown");
    EXPECT_STREQ(e.what(), "User unknown");
    EXPECT_EQ(e.getCvResponse(), "<response/>");
    EXPECT_EQ(e.getQaulifiedName(), std::string(kUri) + ".InvalidUserException");

    AutoPtr<BaseObject> copy(e.clone());
    const auto typed = copy.dynamicCast<InvalidUserException>();
    ASSERT_FALSE(typed.isNull());
    EXPECT_EQ(typed->getCvResponse(), "<response/>");
    catchAs<SoaException>(e, [](const SoaException& c) { EXPECT_EQ(c.getCode(), 515001); });
}

TEST(ServiceException, CarriesErrorsUidAndClientId) {
    ServiceException e;
    EXPECT_TRUE(e.getErrors().empty());

    e.addError("Object is locked", 515024, 3);
    e.addError("Save failed", 515025, 2);
    e.setUid("QxT8aBcdEfGh");
    e.setClientId("client-7");

    EXPECT_EQ(e.getMessage(), "Object is locked");
    EXPECT_EQ(e.getCode(), 515024);
    EXPECT_EQ(e.getLevel(), 3);
    ASSERT_EQ(e.getErrors().size(), 2u);
    EXPECT_EQ(e.getErrors()[1]->getMessage(), "Save failed");
    EXPECT_EQ(e.getQaulifiedName(), std::string(kUri) + ".ServiceException");

    catchAs<ServiceException>(e, [](const ServiceException& c) {
        EXPECT_EQ(c.getUid(), "QxT8aBcdEfGh");
        EXPECT_EQ(c.getClientId(), "client-7");
        EXPECT_EQ(c.getErrors().size(), 2u);
    });
    catchAs<std::exception>(
        e, [](const std::exception& c) { EXPECT_STREQ(c.what(), "Object is locked"); });
}

TEST(CommonExceptions, CarryTheirMessage) {
    const DomException dom("The XML document is nested too deeply.");
    EXPECT_EQ(dom.getMessage(), "The XML document is nested too deeply.");
    catchAs<std::exception>(dom, [](const std::exception& c) {
        EXPECT_STREQ(c.what(), "The XML document is nested too deeply.");
    });

    const IOException io("Unable to open file /tmp/x");
    EXPECT_EQ(io.getMessage(), "Unable to open file /tmp/x");
    catchAs<IOException>(
        io, [](const IOException& c) { EXPECT_STREQ(c.what(), "Unable to open file /tmp/x"); });
}

}  // namespace
