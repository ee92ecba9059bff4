// A host with a log of its own, which also receives the messages of the library.
#include <libVideo/SceneGraph.h>

#include <vesk/Logging.h>

#include <iostream>
#include <string>

namespace {

// The host's own logging function.
enum class Level { info, warning };

void hostLog(Level level, const std::string& topic, const std::string& text)
{
    std::cout << (level == Level::warning ? "warning" : "info") << " | " << topic << " | " << text << '\n';
}

// [handler]
// Sends the library's messages to the host's log as long as the object exists.
class LibraryLog {
public:
    LibraryLog() : m_before(vesk::LogFactory::setHandler(&LibraryLog::take)) {}
    ~LibraryLog() { vesk::LogFactory::setHandler(m_before); }
    LibraryLog(const LibraryLog&) = delete;
    LibraryLog& operator=(const LibraryLog&) = delete;

private:
    static void take(const vesk::Logger& logger, vesk::LoggerPriority::LOGGER_PRIORITY priority,
                     const vesk::String& text)
    {
        const bool isFault = priority == vesk::LoggerPriority::PRIORITY_ERROR;
        hostLog(isFault ? Level::warning : Level::info, logger.channel().data(), text.data());
    }

    vesk::LogHandler m_before;
};
// [/handler]

} // namespace

int main(int argc, char** argv)
{
    const LibraryLog log;
    // [silence]
    vesk::Logger* lights = nullptr;
    vesk::LogFactory::createLogger("libVideo.light", lights);
    lights->priority = vesk::LoggerPriority::PRIORITY_OFF; // silences this channel
    // [/silence]
    for (int i = 1; i < argc; ++i) {
        libVideo::Scene scene;
        const bool isLoaded = scene.createFromCollada(argv[i]);
        hostLog(Level::info, "host", std::string(isLoaded ? "loaded " : "gave up ") + argv[i]);
    }
}
