#pragma once

#include "recordings/films/Libav.h"

#include <string>

namespace velmo::recordings {

/// Packets in, frames out, of at most 16384x16384 pixels and without a thread that would keep frames back.
class Decoder
{
public:
    /// @param name  what messages call the file
    Decoder(const AVCodecParameters& parameters, std::string name);

    /// @param packet  null behind the last one
    void send(const AVPacket* packet);

    /// False if more packets are needed first.
    bool receive(AVFrame& frame);

private:
    std::string m_strName;
    Codec m_pCodec;
};

} // namespace velmo::recordings
