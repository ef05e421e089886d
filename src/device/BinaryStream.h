#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <memory>

// A read-only byte stream over a file (or, for fuzzing and tests, a byte
// array), read through a large buffer so that a byte costs no system call.
class BinaryStream {
public:
    static constexpr qint64 BufferSize = 64 * 1024;

    bool Open(const QString& path);
    void OpenBytes(QByteArray bytes);
    void Close();
    bool IsOpen() const { return m_open; }

    // Next byte; false at the end of the stream (or on a read error).
    bool ReadByte(char& c)
    {
        if (m_pos == m_end && !Fill())
            return false;
        c = m_data[m_pos++];
        return true;
    }

    // No byte left.
    bool AtEnd()
    {
        return m_pos == m_end && !Fill();
    }

private:
    bool Fill();

    std::unique_ptr<QFile> m_file;
    QByteArray m_buffer;
    const char* m_data = nullptr;
    qint64 m_pos = 0;
    qint64 m_end = 0;
    bool m_open = false;
};
