// A desktop portal that knows the two settings of the appearance, on a thread of its own.
//
// Made and used on the main thread.
#pragma once

#include <QByteArray>
#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

struct sd_bus;
struct sd_bus_message;

class PortalServer final {
public:
    enum class Manner {
        Answers,         // with the value in a variant in a variant
        AnswersPlainly,  // with the value in one variant
        AnswersOddly,    // with values of other types
        Refuses,         // with an error
        Hangs,
    };

    struct Settings {
        unsigned colorScheme = 0;
        bool animations = true;
    };

    PortalServer(const QByteArray& address, Manner manner, Settings settings);
    ~PortalServer();
    PortalServer(const PortalServer&) = delete;
    PortalServer& operator=(const PortalServer&) = delete;

    // Tells everybody of a change.
    void changeColorScheme(unsigned scheme);
    void changeAnimations(bool animations);
    // The same with a value of another type, and of a setting with another name.
    void changeOddly();

    // Readings so far, answered or not.
    int readings() const { return m_readings; }

private:
    int answer(sd_bus_message* message);
    void run();
    void later(std::function<void()> work);

    const Manner m_manner;
    const Settings m_settings;
    std::atomic<bool> m_stop = false;
    std::atomic<int> m_readings = 0;
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_work;
    sd_bus* m_bus = nullptr;
    std::thread m_thread;
};
