#include "service/Proxy.h"

namespace vireo {

constinit std::atomic<int> ProxyRequest::mDefaultTimeout{5000};

}  // namespace vireo
