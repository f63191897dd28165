#include "store/StoreOpening.h"

#include "log/Log.h"
#include "store/StoreFile.h"
#include "store/StoreSchema.h"

namespace vireo {
namespace {

constexpr char kComponent[] = "DataAccessService";
constexpr char kFile[] = "./host/store/StoreOpening";

}  // namespace

bool StoreOpening::run(OpenedStore& opened, std::string& error) {
    const Health health = openForWriting(opened, error);
    if (health == Health::eGood) {
        return true;
    }
    // What another program is writing cannot be read without its locks.
    std::string readError;
    if (health != Health::eInUse && openForReading(opened, readError)) {
        return true;
    }
    if (!readError.empty() && error.find(readError) == std::string::npos) {
        error += "; cannot read it either: " + readError;
    }
    return false;
}

SqliteConnection::Health StoreOpening::openForWriting(OpenedStore& opened,
                                                      std::string& error) const {
    const bool wasEmpty = StoreFile(m_path).isEmpty();
    const Health health = connect(opened.connection, error);
    if (health != Health::eGood) {
        return health;
    }
    StoreSchema schema(opened.connection, m_catalogue);
    if (!schema.establish(error) || !schema.load(opened.rows, error)) {
        error.insert(0, m_path + ": ");
        opened.connection.close();
        return Health::eUnusable;
    }
    if (wasEmpty && loggingOnUni(kLogWarning)) {
        logAppUni(kComponent, kFile, kLogWarning, __LINE__,
                  "the store %s was there but empty: all settings have their defaults",
                  m_path.c_str());
    }
    return Health::eGood;
}

bool StoreOpening::openForReading(OpenedStore& opened, std::string& error) const {
    const StoreFile file(m_path);
    opened.rows = StoreRows(m_catalogue);
    opened.hasFile = !file.isMissing() && !file.isEmpty();
    if (file.hasOrphanedLog()) {
        return false;
    }
    if (!opened.hasFile) {
        return true;
    }
    SqliteConnection reader;
    return file.isRegular() && reader.openForReading(m_path, error) == Health::eGood &&
           StoreSchema(reader, m_catalogue).load(opened.rows, error);
}

SqliteConnection::Health StoreOpening::connect(SqliteConnection& connection,
                                               std::string& error) const {
    const StoreFile file(m_path);
    std::string damage = "its write-ahead log stands alone";
    if (!file.hasOrphanedLog()) {
        if (!file.makeUsable(error)) {
            return Health::eUnusable;
        }
        const Health health = connection.open(m_path, m_options.busyTimeoutMs, damage);
        if (health != Health::eDamaged) {
            error = m_path + ": " + damage;
            return health;
        }
    }
    if (!setDamagedAside(damage, error) || !file.makeUsable(error)) {
        return Health::eUnusable;
    }
    const Health health = connection.open(m_path, m_options.busyTimeoutMs, damage);
    error = m_path + ": " + damage;
    return health;
}

bool StoreOpening::setDamagedAside(const std::string& damage, std::string& error) const {
    const std::string newName = StoreFile(m_path).setAside(error);
    if (newName.empty()) {
        error = m_path + " is damaged (" + damage + "); " + error;
        return false;
    }
    if (loggingOnUni(kLogError)) {
        logAppUni(kComponent, kFile, kLogError, __LINE__,
                  "STORE DAMAGED: %s: %s. Set aside as %s; a new, empty store is made",
                  m_path.c_str(), damage.c_str(), newName.c_str());
    }
    return true;
}

}  // namespace vireo
