#include "snmp/SnmpLibrary.h"

#include "snmp/NetSnmp.h"

namespace vireo {
namespace {

/// What the library's own start does, without what reads and writes the files of the machine.
void start() {
    for (const int option :
         {NETSNMP_DS_LIB_DONT_READ_CONFIGS, NETSNMP_DS_LIB_DONT_PERSIST_STATE,
          NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD, NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE}) {
        ::netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, option, 1);
    }
    ::netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_APPTYPE, "vireod");
    ::netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG);
    netsnmp_session first;
    ::snmp_sess_init(&first);
    ::netsnmp_container_init_list();
    ::init_callbacks();
    ::init_snmpv3("vireod");
    ::snmp_call_callbacks(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_POST_PREMIB_READ_CONFIG, nullptr);
    ::snmp_call_callbacks(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_POST_READ_CONFIG, nullptr);
}

}  // namespace

SnmpLibrary::Lock SnmpLibrary::lock() {
    static std::mutex mutex;
    static bool isStarted = false;
    Lock lock(mutex);
    if (!isStarted) {
        isStarted = true;
        start();
    }
    return lock;
}

}  // namespace vireo
