#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "messages/ServiceXmlAdapter.h"
#include "service/ClientUtils.h"

namespace vireo {
namespace {

std::string encoded(const Method& method) {
    std::string text;
    EXPECT_TRUE(ServiceXmlAdapter::encodeText(method, text));
    return text;
}

Method withParameter(std::string name, Parameter::types type, std::string text, int number = 0) {
    Method method("m", Method::eRequest);
    method.addParameter({std::move(name), type, Parameter::eIn, number, std::move(text)});
    return method;
}

Parameter returned(const Method& method) {
    Method decoded;
    const std::string text = encoded(method);
    EXPECT_TRUE(ServiceXmlAdapter::decodeText(text, decoded)) << text;
    return decoded.parameters().empty() ? Parameter() : decoded.parameters()[0];
}

std::string nested(int depth) {
    std::string text;
    for (int i = 0; i < depth; ++i) {
        text += "<a>";
    }
    for (int i = 0; i < depth; ++i) {
        text += "</a>";
    }
    return text;
}

TEST(ServiceXmlAdapter, KeepsEveryNumberAndEveryTextThatXmlCarries) {
    for (const std::string& text : std::vector<std::string>{
             "", " ", "\t\n\r", "\r\n x \r", "a&b", "&amp;", "]]>", "</param>", "<![CDATA[x]]>",
             "<!-- x -->", "<?p?>", "'\"", "\x7F\xC2\x80\xC2\x85\xE2\x80\xA8", "\xEF\xBB\xBF bom",
             "\xEF\xBF\xBD\xED\x9F\xBF\xEE\x80\x80", "\xF0\x9F\x93\x9E\xF4\x8F\xBF\xBD",
             std::string(1U << 20U, '&')}) {
        const Method method = withParameter(text, Parameter::types::eString, text);
        EXPECT_EQ(returned(method).text, text);
        EXPECT_EQ(returned(method).name, text);
    }
    for (const int number : {INT_MIN, INT_MAX}) {
        EXPECT_EQ(returned(withParameter("n", Parameter::types::eInt, "", number)).number, number);
    }
}

TEST(ServiceXmlAdapter, RefusesToWriteWhatXmlCannotCarry) {
    for (const std::string& text : {std::string("a\x01"), std::string(1, '\0')}) {
        for (const Method& method :
             {Method(text, Method::eRequest), withParameter(text, Parameter::types::eInt, ""),
              withParameter("p", Parameter::types::eString, text),
              withParameter("p", Parameter::types::eXML, text)}) {
            std::string out = "before";
            EXPECT_FALSE(ServiceXmlAdapter::encodeText(method, out));
            EXPECT_EQ(out, "before");
        }
    }
}

TEST(ServiceXmlAdapter, XmlTravelsAsItIsAndOtherTextEscaped) {
    for (const std::string& xml : std::vector<std::string>{
             "", "plain", "<a/>", "<a b='1'/>\n<c>&amp;&#10;</c>", "a<!-- c --><![CDATA[<]]>",
             "<p:a xmlns:p='u'/>", "<?p q?>", "<param name='x'>1</param>", nested(62)}) {
        EXPECT_EQ(returned(withParameter("p", Parameter::types::eXML, xml)).text, xml);
    }
    const struct {
        std::string text;
        std::string inner;
    } rows[] = {
        {"<a", "&lt;a"},
        {"a & b", "a &amp; b"},
        {"]]>", "]]&gt;"},
        {"</param>", "&lt;/param&gt;"},
        {"</param><param>", "&lt;/param&gt;&lt;param&gt;"},
        {"<a b='1' b='2'/>", "&lt;a b='1' b='2'/&gt;"},
        {"&entity;", "&amp;entity;"},
        {"<?xml version='1.0'?>", "&lt;?xml version='1.0'?&gt;"},
        {"<!DOCTYPE a>", "&lt;!DOCTYPE a&gt;"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(returned(withParameter("p", Parameter::types::eXML, row.text)).text, row.inner);
    }
    EXPECT_EQ(returned(withParameter("p", Parameter::types::eXML, nested(63))).text.find('<'),
              std::string::npos);
}

TEST(ServiceXmlAdapter, TakesWhatAPersonWouldWrite) {
    const std::string text =
        "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?>\n<!-- ask -->\n<request name='m'>\n"
        "  <param dir='0' type='bool' name='a'>true</param>\r\n"
        "  <param type='bool' name='b' dir='0'>false</param>\n"
        "  <param name='c' type='string' dir='2'/>\n"
        "  <param name='d' type='xml' dir='0'/>\n"
        "  <param name='e' type='string' dir='0'><![CDATA[<x>]]> &#x41;\r\n</param >\n"
        "  <param name='f' type='xml' dir='0'> <x/> </param>\n"
        "  <?note this?></request>\n";
    Method method;
    ASSERT_TRUE(ServiceXmlAdapter::decodeText(text, method));
    EXPECT_EQ(method.type(), Method::eRequest);
    EXPECT_TRUE(method.getBoolParameter("a", Parameter::eIn));
    EXPECT_FALSE(method.getBoolParameter("b", Parameter::eIn));
    EXPECT_EQ(method.getStringParameter("c", Parameter::eOut), "");
    EXPECT_EQ(method.getXMLParameter("d", Parameter::eIn), "");
    EXPECT_EQ(method.getStringParameter("e", Parameter::eIn), "<x> A\n");
    EXPECT_EQ(method.getXMLParameter("f", Parameter::eIn), " <x/> ");
}

// That every beginning of a message is refused, and one that is nested too deep, is seen in the
// tests of the service.
TEST(ServiceXmlAdapter, RefusesMalformedMessages) {
    const auto parameter = [](const std::string& attributes, const std::string& value) {
        return "<request name='m'><param " + attributes + ">" + value + "</param></request>";
    };
    std::vector<std::string> messages{
        "x",
        "<request/>",
        "<Request name='m'/>",
        "<request name='m' x='1'/>",
        "<request x='m'/>",
        "<request name='m'/><request name='m'/>",
        "<request name='m'/>x",
        "<request name='m'>x</request>",
        "<request name='m'><other name='p' type='int' dir='0'>1</other></request>",
        "<request name='m'><![CDATA[x]]></request>",
        "<p:request xmlns:p='u' name='m'/>",
        "<!DOCTYPE request><request name='m'/>",
        "<?xml version='1.0' encoding='UTF-16'?>" + std::string("\xFF\xFE<", 3),
        parameter("name='p' type='string' dir='0'", "<x/>"),
        parameter("name='p' type='string' dir='0'", "&x;"),
        parameter("name='p' type='string' dir='0'", "\xED\xA0\x80"),
        parameter("name='p' type='xml' dir='0'", "<x/></x>"),
        parameter("name='p' type='xml' dir='0'", "<?xml version='1.0'?>"),
        nested(1U << 16U)};
    for (const char* attributes : {"type='int' dir='0'", "name='p' dir='0'", "name='p' type='int'",
                                   "name='p' type='long' dir='0'", "name='p' type='int' dir='3'",
                                   "name='p' type='int' dir=''", "name='p' type='int' dir='00'",
                                   "name='p' type='int' dir='0' x='1'"}) {
        messages.push_back(parameter(attributes, "1"));
    }
    for (const char* number : {"", " 1", "1 ", "+1", "0x1", "1.0", "2147483648", "<x/>"}) {
        messages.push_back(parameter("name='p' type='int' dir='0'", number));
    }
    for (const char* flag : {"", "2", "True"}) {
        messages.push_back(parameter("name='p' type='bool' dir='0'", flag));
    }
    for (const std::string& message : messages) {
        Method untouched("keep", Method::eResponse);
        EXPECT_FALSE(ServiceXmlAdapter::decodeText(message, untouched)) << message.substr(0, 200);
        EXPECT_EQ(untouched.name(), "keep");
    }
}

TEST(ClientUtils, ExtractsTheTextOfTheFirstElementOfAName) {
    const struct {
        std::string xml;
        const char* name;
        const char* value;
    } rows[] = {
        {"<type>3</type><name>a &amp; &#60;b.mp3</name>", "type", "3"},
        {"<type>3</type><name>a &amp; &#60;b.mp3</name>", "name", "a & <b.mp3"},
        {"<type> 3\n</type>", "type", " 3\n"},
        {"<x><n>in</n></x><n>out</n>", "n", "in"},
        {"<n><![CDATA[<a>]]>b</n>", "n", "<a>b"},
        {"<n a='1'>v</n>", "n", "v"},
        {"<n>a<b>c<d/></b>e</n>", "n", "ace"},
        {"<n/><n>second</n>", "n", ""},
        {"<n>v</n>", "N", ""},
        {"<n>v</n>", "", ""},
        {"text", "text", ""},
        {"", "n", ""},
        {"<n>v</n", "n", ""},
        {"<n>v</n><m>", "n", ""},
        {"<n>&x;</n>", "n", ""},
        {"<!DOCTYPE n><n>v</n>", "n", ""},
        {"<n>v</n>" + nested(65), "n", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ClientUtils::extractValueFromXMLString(row.xml, row.name), row.value) << row.xml;
    }
}

}  // namespace
}  // namespace vireo
