#pragma once

namespace vireo {

class StoragePort;

/// What the phone's own user has of the files that the phone was deployed with, before he did
/// anything: everything. Later starts add what was deployed since.
class FirstLinks {
public:
    /// Makes a link in the user's directory to every deployed piece of music, picture, screensaver
    /// and ringer that is neither there, by a file or a link, nor among the user's deleted ones.
    /// What cannot be made has an error line. Before the service starts.
    static void make(StoragePort& storage);
};

}  // namespace vireo
