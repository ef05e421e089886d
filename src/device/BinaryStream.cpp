#include "BinaryStream.h"

bool BinaryStream::Open(const QString& path)
{
    Close();
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::ReadOnly))
        return false;
    m_file = std::move(file);
    m_buffer.resize(BufferSize);
    m_open = true;
    return true;
}

void BinaryStream::OpenBytes(QByteArray bytes)
{
    Close();
    m_buffer = std::move(bytes);
    m_data = m_buffer.constData();
    m_end = m_buffer.size();
    m_open = true;
}

void BinaryStream::Close()
{
    m_file.reset();
    m_buffer.clear();
    m_data = nullptr;
    m_pos = m_end = 0;
    m_open = false;
}

bool BinaryStream::Fill()
{
    if (!m_file)
        return false;
    const qint64 n = m_file->read(m_buffer.data(), m_buffer.size());
    if (n <= 0)
        return false;
    m_data = m_buffer.constData();
    m_pos = 0;
    m_end = n;
    return true;
}
