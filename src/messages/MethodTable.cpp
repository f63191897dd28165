#include "messages/MethodTable.h"

#include "messages/ItemMethods.h"
#include "messages/MethodNames.h"
#include "messages/SchemaMethods.h"

namespace vireo {
namespace {

constexpr MethodRow kMethods[] = {
    {methodNames::kSetData, handleSetData},
    {methodNames::kGetData, handleGetData},
    {methodNames::kFindSchemaName, handleFindSchemaName},
    {methodNames::kExportSchema, handleExportSchema},
    {methodNames::kGetSchema, handleGetSchema},
    {methodNames::kInvalidateVCMSCache, handleInvalidateVCMSCache},
};

}  // namespace

const MethodRow* findMethod(const std::string& name) {
    for (const MethodRow& row : kMethods) {
        if (name == row.name) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace vireo
