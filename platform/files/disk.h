// The system calls that access the disk, as one interface. "platform/files/files.h" uses nothing else, so a
// test can install a disk that makes any transfer fail, fall short or be the process's last.
#pragma once

#include <cstddef>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <vector>

namespace drevix {

// What a new file is made with, less the user's umask.
inline constexpr mode_t kNewFileMode = 0666;

// Every operation follows the system call in its comment: -1 with errno set on failure. The base class is the
// real disk.
class Disk {
  public:
    virtual ~Disk() = default;
    virtual int Open(const char *path, int flags, mode_t mode); // open(2), O_CLOEXEC added
    virtual int Close(int fd);                                  // close(2)
    virtual ssize_t ReadAt(int fd, void *bytes, std::size_t count,
                           off_t offset); // pread(2), read(2) for a stream
    virtual ssize_t WriteAt(int fd, const void *bytes, std::size_t count,
                            off_t offset);                              // pwrite(2), write(2) likewise
    virtual int SetSize(int fd, off_t size);                            // ftruncate(2)
    virtual int Flush(int fd);                                          // fsync(2)
    virtual int StatusOf(int fd, struct stat *status);                  // fstat(2)
    virtual int StatusAt(const char *path, struct stat *status);        // lstat(2)
    virtual int Lock(int fd);                                           // flock(2), LOCK_EX | LOCK_NB
    virtual int SetMode(int fd, mode_t mode);                           // fchmod(2)
    virtual int SetOwner(int fd, uid_t user, gid_t group);              // fchown(2)
    virtual int Rename(const char *from, const char *to);               // rename(2)
    virtual int Remove(const char *path);                               // unlink(2)
    virtual int MakeLink(const char *from, const char *to);             // link(2)
    virtual int MakeSymbolicLink(const char *target, const char *path); // symlink(2)
    virtual ssize_t ReadLink(const char *path, char *target, std::size_t size); // readlink(2)
    virtual int MakeFolder(const char *path, mode_t mode);                      // mkdir(2)
    virtual int RealPath(const char *path, std::string *real);                  // realpath(3)
    // readdir(3) to the end: the names of all entries except "." and "..", unordered.
    virtual int ListFolder(const char *path, std::vector<std::string> *names);
};

// Installs the disk for all files (null: the real one) and returns the previous one. A file must be closed by
// the disk that opened it.
Disk *SetDisk(Disk *disk);

// The current disk.
[[nodiscard]] Disk &CurrentDisk();

} // namespace drevix
