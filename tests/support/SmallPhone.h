#pragma once

#include <string>

#include "support/TestPorts.h"

namespace vireo::test {

/// A phone of a few items of every kind, as configuration texts.
inline void installSmallPhone(TestPorts& ports) {
    ports.files["vcmsInit.xml"] = R"(<dxl>
        <document name="vcmsServiceList" schema="serviceList">
            <service><import>items.xml</import>
                <managementId>VcmsMgmtId</managementId><itemMap>ownItems</itemMap></service>
            <service><managementId>EagerMgmtId</managementId><itemMap>eagerItems</itemMap>
                <dontCacheUnlessRegistered>true</dontCacheUnlessRegistered></service>
            <service><managementId>LazyMgmtId</managementId><itemMap>lazyItems</itemMap>
                <dontCacheUnlessRegistered>TRUE</dontCacheUnlessRegistered></service>
        </document></dxl>)";
    ports.files["items.xml"] = R"(<dxl>
        <schema name="text" type="string"/>
        <schema name="preset" type="string">preset</schema>
        <schema name="account"><data name="user" type="string"/><data name="realm" type="string"/>
        </schema>
        <document name="ownItems" schema="itemMap">
            <item><rootId>melody</rootId><schema>text</schema></item>
            <item><rootId>volume</rootId><schema>text</schema></item>
            <item><rootId>plain</rootId><schema>preset</schema></item>
            <item><rootId>key-1</rootId><schema>text</schema></item>
            <item><rootId>key-2</rootId><schema>text</schema></item>
            <item><rootId>key-lost</rootId><schema>text</schema></item>
            <item><rootId>account</rootId><schema>account</schema></item>
            <item><rootId>guarded</rootId><schema>text</schema></item>
            <item><rootId>no-schema</rootId><schema>missing</schema></item>
            <item><rootId>phone-busy-status</rootId><schema>text</schema></item>
            <item><rootId>software-type</rootId><schema>text</schema></item>
            <item><rootId>memory-monitor-remote-callback</rootId><schema>text</schema></item>
            <item><rootId>a-file-request</rootId><schema>text</schema></item>
            <item><rootId>x-locked-config-menus-file-y</rootId><schema>text</schema></item>
            <item><rootId>lazyItems</rootId><schema>text</schema></item>
            <item><rootId>masterItemMap</rootId><schema>text</schema></item>
            <item><rootId>../up</rootId><schema>text</schema></item>
        </document>
        <document name="eagerItems" schema="itemMap">
            <item><rootId>eager</rootId><schema>text</schema></item>
            <item><rootId>melody</rootId><schema>account</schema></item>
        </document>
        <document name="lazyItems" schema="itemMap">
            <item><rootId>lazy</rootId><schema>preset</schema></item>
            <item><rootId>lazy-2</rootId><schema>text</schema></item>
            <item><rootId>time</rootId><schema>text</schema></item>
        </document>
        <document name="VcmsTableList" schema="tables">
            <table><dasSchemaName>Keys</dasSchemaName><dasIndexName>KeyIndex</dasIndexName>
                <itemMap>keyItems</itemMap></table>
        </document>
        <document name="keyItems" schema="tableItems">
            <item><rootId>key-1</rootId><dasIndexValue>1</dasIndexValue>
                <dasItemName>Label</dasItemName></item>
            <item><rootId>key-2</rootId><dasIndexValue>2</dasIndexValue>
                <dasItemName>Label</dasItemName></item>
        </document>
        <document name="VcmsDataCollection" schema="collections">
            <collection><collectionId>pair</collectionId>
                <collectionDataList>pairItems</collectionDataList></collection>
            <collection><collectionId>overlap</collectionId>
                <collectionDataList>overlapItems</collectionDataList></collection>
            <collection><collectionId>nest</collectionId>
                <collectionDataList>nestItems</collectionDataList></collection>
            <collection><collectionId>loop</collectionId>
                <collectionDataList>loopItems</collectionDataList></collection>
            <collection><collectionId>odd</collectionId>
                <collectionDataList>oddItems</collectionDataList></collection>
            <collection><collectionId>plain</collectionId>
                <collectionDataList>pairItems</collectionDataList></collection>
            <collection><collectionId>left</collectionId>
                <collectionDataList>left</collectionDataList></collection>
            <collection><collectionId>right</collectionId>
                <collectionDataList>right</collectionDataList></collection>
            <collection><collectionId>hollow</collectionId>
                <collectionDataList>missing</collectionDataList></collection>
        </document>
        <document name="pairItems" schema="members">
            <rootId>melody</rootId><rootId>lazy</rootId></document>
        <document name="overlapItems" schema="members">
            <rootId>lazy</rootId><rootId>volume</rootId></document>
        <document name="nestItems" schema="members">
            <rootId>guarded</rootId><rootId>pair</rootId><rootId>overlap</rootId></document>
        <document name="loopItems" schema="members">
            <rootId>loop</rootId><rootId>key-1</rootId><rootId>nest</rootId>
            <rootId>loop</rootId><rootId>plain</rootId></document>
        <document name="oddItems" schema="members">
            <rootId>nothing</rootId><rootId>melody</rootId><rootId>eager</rootId></document>
        <document name="left" schema="members">
            <rootId>melody</rootId><rootId>right</rootId></document>
        <document name="right" schema="members">
            <rootId>left</rootId><rootId>lazy</rootId></document>
        <document name="VcmsToDasMapping" schema="mapping">
            <item><rootId>melody</rootId><nodeId>melody</nodeId>
                <dasSchemaName>Settings</dasSchemaName><dasItemName>Melody</dasItemName>
                <default>7</default></item>
            <item><rootId>volume</rootId><nodeId>volume</nodeId>
                <dasSchemaName>Settings</dasSchemaName><dasItemName>Volume</dasItemName></item>
            <item><rootId>account</rootId><nodeId>user</nodeId>
                <dasSchemaName>Settings</dasSchemaName><dasItemName>User</dasItemName>
                <default>nobody</default></item>
            <item><rootId>account</rootId><nodeId>realm</nodeId>
                <dasSchemaName>Settings</dasSchemaName><dasItemName>Realm</dasItemName></item>
            <item><rootId>guarded</rootId><nodeId>guarded</nodeId>
                <dasSchemaName>Settings</dasSchemaName><dasItemName>Guarded</dasItemName>
                <default>on</default></item>
            <item><rootId>key-lost</rootId><nodeId>key-lost</nodeId>
                <dasSchemaName>Keys</dasSchemaName><dasItemName>Label</dasItemName></item>
            <item><rootId>software-type</rootId><nodeId>software-type</nodeId>
                <dasSchemaName>Settings</dasSchemaName><dasItemName>SoftwareType</dasItemName>
                </item>
        </document></dxl>)";
    ports.files["CallFailingItems.xml"] = R"(<dxl>
        <document name="CallFailingVcmsItems" schema="items">
            <item><rootId>guarded</rootId></item></document></dxl>)";
}

inline const char* smallPhoneStore() {
    return R"(<store>
        <table name="Settings"><column name="Melody"/><column name="Volume"/><column name="User"/>
            <column name="Realm"/><column name="Guarded"/><column name="SoftwareType"/></table>
        <table name="Keys" index="KeyIndex"><column name="Label"/></table></store>)";
}

}  // namespace vireo::test
