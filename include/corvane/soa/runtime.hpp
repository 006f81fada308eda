#ifndef CORVANE_SOA_RUNTIME_HPP
#define CORVANE_SOA_RUNTIME_HPP

// Every public header of the runtime library, for programs that want all of it at once. A test
// (umbrella_complete) fails when a header under include/ is missing here.

#include <corvane/soa/BuildInfo.hpp>
#include <corvane/soa/Export.hpp>
#include <corvane/soa/common/AccountedAllocation.hpp>
#include <corvane/soa/common/AutoPtr.hpp>
#include <corvane/soa/common/Counted.hpp>
#include <corvane/soa/common/DateTime.hpp>
#include <corvane/soa/common/DefaultMemoryAllocatorImpl.hpp>
#include <corvane/soa/common/MemObjectInfo.hpp>
#include <corvane/soa/common/MemoryAllocator.hpp>
#include <corvane/soa/common/MemoryInfo.hpp>
#include <corvane/soa/common/MemoryManager.hpp>
#include <corvane/soa/common/StringUtils.hpp>
#include <corvane/soa/common/Version.hpp>
#include <corvane/soa/common/exceptions/DomException.hpp>
#include <corvane/soa/common/exceptions/IOException.hpp>
#include <corvane/soa/common/xml/BaseObject.hpp>
#include <corvane/soa/common/xml/FieldAccess.hpp>
#include <corvane/soa/common/xml/FieldDescriptor.hpp>
#include <corvane/soa/common/xml/FieldKind.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/LexicalCast.hpp>
#include <corvane/soa/common/xml/ListAccess.hpp>
#include <corvane/soa/common/xml/ObjectList.hpp>
#include <corvane/soa/common/xml/ObjectRuntime.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/StringStream.hpp>
#include <corvane/soa/common/xml/TryingToCreateNullHandle.hpp>
#include <corvane/soa/common/xml/TypeDescriptor.hpp>
#include <corvane/soa/common/xml/TypeRegistry.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>
#include <corvane/soa/common/xml/XmlUtil.hpp>
#include <corvane/soa/internal/json/BooleanValue.hpp>
#include <corvane/soa/internal/json/DateValue.hpp>
#include <corvane/soa/internal/json/DoubleValue.hpp>
#include <corvane/soa/internal/json/IndexOutOfRangeException.hpp>
#include <corvane/soa/internal/json/IntegerValue.hpp>
#include <corvane/soa/internal/json/InvalidTypeException.hpp>
#include <corvane/soa/internal/json/JSONArray.hpp>
#include <corvane/soa/internal/json/JSONException.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/KeyNotFoundException.hpp>
#include <corvane/soa/internal/json/NullValue.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/internal/json/ParsingException.hpp>
#include <corvane/soa/internal/json/StringValue.hpp>
#include <corvane/soa/internal/json/Value.hpp>
#include <corvane/soa/internal/json/ValueAllocator.hpp>
#include <corvane/soa/schemas.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ConnectionException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/Error.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidCredentialsException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InvalidUserException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ProtocolException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ServiceException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/SoaException.hpp>

#endif
