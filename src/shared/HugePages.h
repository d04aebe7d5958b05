#pragma once

#include <QByteArray>

#include <cstddef>

/// Memory in huge pages for the big buffers of large files: data decoded or
/// copied out of a file, a file read or written whole, the index of a
/// dictionary with millions of keys. A hundred megabytes then take fifty page
/// faults rather than twenty-five thousand, and a random probe costs a cache
/// miss but no walk of the page tables. Below one huge page it is ordinary
/// memory; huge pages are only asked for, and small pages work the same.
///
/// `Plain` is the twin in ordinary memory throughout, which behaves the same
/// in all but speed; tests hold the two together. Thread-safe.
class HugePages
{
public:
    static constexpr std::size_t kPageBytes = std::size_t(2) << 20;

    /// `size` uninitialised bytes, in huge pages where the size allows.
    static QByteArray buffer(qsizetype size);
    /// Asks for huge pages in a part of a buffer that nothing has touched yet.
    static void advise(void *part, std::size_t bytes) noexcept;
    /// `bytes` of memory, from one huge page up fresh from the system, where
    /// the heap's recycled pages would mostly be small ones already; given
    /// back with `release` and the same size.
    static void *allocate(std::size_t bytes);
    static void release(void *memory, std::size_t bytes) noexcept;

    struct Plain
    {
        static QByteArray buffer(qsizetype size) { return QByteArray(size, Qt::Uninitialized); }
        static void *allocate(std::size_t bytes) { return ::operator new(bytes); }
        static void release(void *memory, std::size_t) noexcept { ::operator delete(memory); }
    };
};
