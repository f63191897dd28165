#include <gtest/gtest.h>

#include <sstream>

#include "messages/RpcAdapter.h"
#include "messages/ServiceXmlAdapter.h"
#include "service/ProtocolAdapter.h"

namespace vireo {
namespace {

/// An adapter that knows streams alone.
class StreamAdapter : public ProtocolAdapter {
public:
    bool encode(const Method& method, std::ostream& out) override {
        return m_adapter.encode(method, out);
    }
    bool decode(std::istream& in, Method& method) override { return m_adapter.decode(in, method); }

private:
    ServiceXmlAdapter m_adapter;
};

Method methodOf(const std::string& text) {
    Method method("m", Method::eResponse);
    method.addBoolParameter("result", Parameter::eOut, true);
    method.addStringParameter("text", Parameter::eInOut, text);
    return method;
}

TEST(ProtocolAdapter, DoesTheSameOnTextsAsOnStreams) {
    RpcAdapter rpc;
    ServiceXmlAdapter xml;
    StreamAdapter streams;
    for (ProtocolAdapter* adapter : std::initializer_list<ProtocolAdapter*>{&rpc, &xml, &streams}) {
        for (const std::string& text : {std::string(), std::string("a<b"), std::string(5000, 'x'),
                                        std::string("\0\x01", 2)}) {
            std::ostringstream stream;
            const bool isCarried = adapter->encode(methodOf(text), stream);
            std::string out = "before";
            EXPECT_EQ(adapter->encodeTo(methodOf(text), out), isCarried);
            EXPECT_EQ(out, "before" + stream.str());
            if (!isCarried) {
                continue;
            }
            Method read;
            ASSERT_TRUE(adapter->decodeFrom(stream.str(), read));
            EXPECT_EQ(read.type(), Method::eResponse);
            EXPECT_EQ(read.getStringParameter("text", Parameter::eInOut), text);
            for (const std::string& bad : {std::string(), stream.str() + "x"}) {
                Method kept("kept", Method::eRequest);
                EXPECT_FALSE(adapter->decodeFrom(bad, kept));
                EXPECT_EQ(kept.name(), "kept");
            }
        }
    }
}

}  // namespace
}  // namespace vireo
