#ifndef CORVANE_SOA_RUNTIME_HPP
#define CORVANE_SOA_RUNTIME_HPP

// Every header of the runtime library, for programs that want all of it at once.

#include <corvane/soa/common/AccountedAllocation.hpp>
#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/Counted.hpp>
#include <corvane/soa/common/DefaultMemoryAllocatorImpl.hpp>
#include <corvane/soa/common/IPropertyPolicyChangeListener.hpp>
#include <corvane/soa/common/MemObjectInfo.hpp>
#include <corvane/soa/common/MemoryAllocator.hpp>
#include <corvane/soa/common/MemoryInfo.hpp>
#include <corvane/soa/common/MemoryManager.hpp>
#include <corvane/soa/common/ObjectPropertyPolicy.hpp>
#include <corvane/soa/common/PolicyProperty.hpp>
#include <corvane/soa/common/PolicyType.hpp>
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/StringStream.hpp>
#include <corvane/soa/common/xml/TryingToCreateNullHandle.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/common/xml/XmlUtil.hpp>
#include <corvane/soa/internal/common/PolicyMarshaller.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Value.hpp>
#include <corvane/soa/internal/json/ValueAllocator.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ConnectionException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/Error.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidCredentialsException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidUserException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ProtocolException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ServiceException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/SoaException.hpp>

#endif
