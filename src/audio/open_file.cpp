// Opening and closing audio files.
#include <cstdio>
#include <memory>
#include <new>

#include "audio/audio_errors.h"
#include "audio/audio_file.h"
#include "audio/format_table.h"

namespace vistel {

namespace {

struct Closer {
    void operator()(AFfilehandle* file) const {
        file->magic = 0;
        delete file;
    }
};
using OwnedHandle = std::unique_ptr<AFfilehandle, Closer>;

// What a file is opened with.
struct Opening {
    const char* operation;
    const std::string& name;
    const AFfilesetup* setup;
};

// Where the format that the setup tells, or the file's first bytes, stands in the table; -1 when
// there is none.
int32_t formatPosition(const Opening& opening, FILE* stream) {
    int32_t position = -1;
    if (opening.setup) {
        position = tablePositionOf(opening.setup->format);
    } else {
        const int64_t before = platform::streamPosition(stream);
        char bytes[12];
        const size_t got = platform::seekStream(stream, 0, SEEK_SET)
                               ? std::fread(bytes, 1, sizeof bytes, stream)
                               : 0;
        if (const AudioFormat* format = recogniseAudio({bytes, got}))
            position = tablePositionOf(format->id);
        (void)platform::seekStream(stream, before, SEEK_SET);  // what cannot seek was not read
    }
    if (position < 0)
        AFreporterror(afWarning, "%s: WARNING %s does not have a recognized audio file format\n",
                      opening.operation, opening.name.c_str());
    return position;
}

OwnedHandle newHandle(const Opening& opening, platform::FilePtr& stream, AfAccess access,
                      int32_t position) try {
    OwnedHandle file(new AFfilehandle);
    file->name = opening.name;
    file->stream = std::move(stream);
    file->access = access;
    file->tablePosition = position;
    file->format = fileFormatAt(position);
    file->seekable = file->format != afSocketRaw;
    return file;
} catch (const std::bad_alloc&) {
    AFreporterror(afNoHandle,
                  access == afRead ? "%s: no free descriptors avaiable\n"
                                   : "%s: no audio file descriptors available\n",
                  opening.operation);
    return nullptr;
}

bool validSetup(const Opening& opening) {
    if (opening.setup && opening.setup->magic == afSetupMagic) return true;
    AFreporterror(afBadSetup, "%s: invalid AFfilesetup argument\n", opening.operation);
    return false;
}

OwnedHandle openForReading(const Opening& opening, platform::FilePtr stream) {
    if (opening.setup && !validSetup(opening)) return nullptr;
    // Samples go straight to where they are wanted: a buffer would copy them once more.
    std::setvbuf(stream.get(), nullptr, _IONBF, 0);
    const int32_t position = formatPosition(opening, stream.get());
    if (position < 0 || !audioFormatSupported(opening.operation, position)) return nullptr;
    OwnedHandle file = newHandle(opening, stream, afRead, position);
    if (!file) return nullptr;
    const AudioFormat& format = audioFormats[position];
    if (!format.startReading(opening.operation, *file, opening.setup) ||
        !format.parseHeader(opening.operation, *file) ||
        (format.startTrack && !format.startTrack(opening.operation, *file)))
        return nullptr;
    return file;
}

OwnedHandle openForWriting(const Opening& opening, platform::FilePtr stream) {
    if (!validSetup(opening)) return nullptr;
    const int32_t position = formatPosition(opening, stream.get());
    if (position < 0 || !audioFormatSupported(opening.operation, position)) return nullptr;
    OwnedHandle file = newHandle(opening, stream, afWrite, position);
    if (!file) return nullptr;
    // Each write is to tell whether it went well.
    std::setvbuf(file->stream.get(), nullptr, _IONBF, 0);
    const AudioFormat& format = audioFormats[position];
    if (!format.startWriting(opening.operation, *file, *opening.setup) ||
        (format.writeHeader && !format.writeHeader(opening.operation, *file)))
        return nullptr;
    return file;
}

// The first character of a mode; 0, and a report, for one that is not known.
char accessOf(const char* operation, const char* mode) {
    if (mode && (mode[0] == 'r' || mode[0] == 'w')) return mode[0];
    AFreporterror(afBadMode, "%s: unrecognized mode %s\n", operation, mode ? mode : "(null)");
    return 0;
}

AFfilehandle* openStream(const Opening& opening, char access, platform::FilePtr stream) {
    return (access == 'r' ? openForReading : openForWriting)(opening, std::move(stream)).release();
}

AFfilehandle* openDescriptor(const char* operation, int descriptor, const char* mode,
                             const std::string& name, const AFfilesetup* setup) {
    const char access = accessOf(operation, mode);
    if (access == 0) return nullptr;
    platform::FilePtr stream(platform::openDescriptor(descriptor, access == 'r' ? "r" : "w"));
    if (!stream) {
        AFreporterror(afNoHandle,
                      access == 'r' ? "%s: no free descriptors avaiable\n"
                                    : "%s: no audio file descriptors available\n",
                      operation);
        return nullptr;
    }
    return openStream({operation, name, setup}, access, std::move(stream));
}

}  // namespace

AFfilehandle* AFopenfile(const std::string& path, const char* mode, const AFfilesetup* setup) {
    const char* operation = "AFopenfile";
    const char access = accessOf(operation, mode);
    if (access == 0) return nullptr;
    const Opening opening{operation, path, setup};
    if (access == 'w' && !validSetup(opening)) return nullptr;  // before a file is emptied for it
    platform::FilePtr stream(access == 'r' ? platform::openFile(path, "r")
                                           : platform::createPrivateFile(path));
    if (!stream) {
        AFreporterror(afOpenFailed,
                      access == 'r' ? "%s: open(%s, O_RDONLY) returned %d\n"
                                    : "%s: open(%s, O_WRONLY|O_CREAT|O_TRUNC) returned %d\n",
                      operation, path.c_str(), -1);
        return nullptr;
    }
    return openStream(opening, access, std::move(stream));
}

AFfilehandle* AFopenfd(int descriptor, const char* mode, const AFfilesetup* setup) {
    const char* name = mode && mode[0] == 'r' ? "<read file>" : "<write file>";
    return openDescriptor("AFopenfd", descriptor, mode, name, setup);
}

AFfilehandle* AFopennamedfd(int descriptor, const char* mode, const std::string& name,
                            const AFfilesetup* setup) {
    return openDescriptor("AFopennamedfd", descriptor, mode, name, setup);
}

// Fills the header in at the end of a written file.
static bool finishWriting(const char* operation, AFfilehandle& file) {
    const AudioFormat& format = audioFormats[file.tablePosition];
    return (!format.padSamples || format.padSamples(operation, file)) &&
           (!format.updateHeader || format.updateHeader(operation, file));
}

int32_t AFclosefile(AFfilehandle* file) {
    const char* operation = "AFclosefile";
    if (!file || file->magic != afHandleMagic) return -1;
    const OwnedHandle owned(file);
    bool whole = true;
    if (file->access == afWrite) {
        whole = finishWriting(operation, *file);
    } else if (file->access != afRead) {
        AFreporterror(afBadMode, "%s: unrecognized access mode %d\n", operation, file->access);
        return -1;
    }
    const int descriptor = platform::streamDescriptor(file->stream.get());
    if (std::fclose(file->stream.release()) != 0) {
        AFreporterror(afCloseFailed, "%s: close(%d) returned %d\n", operation, descriptor, -1);
        return -1;
    }
    return whole ? 0 : -1;
}

}  // namespace vistel
