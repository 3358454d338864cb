// The audio file library: reads and writes AIFF, AIFF-C, RIFF WAVE and headerless samples, frame by
// frame. A file's format is told by its first bytes. Every failure is reported once through
// audio/audio_errors.h, under the name of the operation that failed; then the operation returns
// null, -1 or 0. A handle is used by one thread at a time.
//
//     AFfilehandle* file = AFopenfile("shot.aiff", "r", nullptr);
//     if (!file) return;                                      // reported already
//     AFseekframe(file, afDefaultTrack, 1000);
//     const int64_t got = AFreadframes(file, afDefaultTrack, buffer, wanted);
//     AFclosefile(file);
//
// What the caller is given is interleaved by channel, native in byte order, 1 byte for widths up to
// 8 bits, 2 up to 16, else 4; 24-bit samples are sign-extended to 32 bits, not shifted.
//
// The interface is whole: writing, setups and opening by descriptor have no caller in the viewer.
#pragma once

#include <cstdint>
#include <string>

#include "audio/audio_records.h"

namespace vistel {

// Opens a file whose mode begins with 'r' or 'w'. A setup is needed for writing and for headerless
// samples. The handle is the caller's, until AFclosefile.
[[nodiscard]] AFfilehandle* AFopenfile(const std::string& path, const char* mode,
                                       const AFfilesetup* setup);
// The same for a descriptor, which is the library's from then on, and closed when this fails.
[[nodiscard]] AFfilehandle* AFopenfd(int descriptor, const char* mode, const AFfilesetup* setup);
[[nodiscard]] AFfilehandle* AFopennamedfd(int descriptor, const char* mode, const std::string& name,
                                          const AFfilesetup* setup);
// 0, or -1 when the file was not written to its end or could not be closed; the handle goes either
// way. A null handle or one of another magic: -1, without a report.
int32_t AFclosefile(AFfilehandle* file);

// The file's format (AfFileFormat), 0 on a bad handle; `version` gets the time stamp of an AIFF-C
// file, else 0.
int32_t AFgetfilefmt(AFfilehandle* file, int32_t* version);
// As the header tells it; the number of samples where there are no channels.
int64_t AFgetframecnt(AFfilehandle* file, int32_t track);
int32_t AFgetchannels(AFfilehandle* file, int32_t track);
double AFgetrate(AFfilehandle* file, int32_t track);
// 0 or -1. Whatever the track, it is that of the only one.
int32_t AFgetsampfmt(AFfilehandle* file, int32_t track, int32_t* format, int32_t* width);

// Reads up to so many frames and returns how many it read; fewer than asked for at the end of the
// samples, or of the file when that is cut.
int64_t AFreadframes(AFfilehandle* file, int32_t track, void* buffer, int64_t frames);
// 0, or -1 for a bad argument; 0 also where the place cannot be reached.
int32_t AFseekframe(AFfilehandle* file, int32_t track, int64_t frame);

// Writes frames as AFreadframes hands them out, and returns how many it wrote. 24-bit samples are
// those bits of each 32-bit sample that lie above the lowest byte.
int64_t AFwriteframes(AFfilehandle* file, int32_t track, const void* buffer, int64_t frames);

// The defaults of AFfilesetup. To be deleted by the caller; null when there is no memory.
[[nodiscard]] AFfilesetup* AFnewfilesetup();
void AFinitfilefmt(AFfilesetup* setup, int32_t format);
void AFinitrate(AFfilesetup* setup, int32_t track, double rate);

}  // namespace vistel
