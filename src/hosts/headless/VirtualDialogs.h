// Dialogs that nobody sees: a program plays the person in front of them.
#pragma once

#include "base/Faults.h"
#include "platform/container/Dialogs.h"

#include <utility>
#include <vector>

namespace lumora::headless
{

class VirtualDialogs : public Dialogs
{
public:
    /// What the person does while an about box is open: sees its texts, presses its second button by calling the
    /// function, and closes the box by returning. Without a person it is closed at once.
    using Person = std::function<void(const AboutTexts&, const std::function<void()>&)>;

    void ShowAbout(const AboutTexts& texts, const std::function<void()>& onSystemInfo) override
    {
        faults::Point("Dialogs.ShowAbout");
        ++aboutBoxesShown_;
        if (const Person person = person_)
            person(texts, onSystemInfo);
    }

    /// Nothing is started; the program is noted.
    void StartProgram(const std::filesystem::path& program) override
    {
        faults::Point("Dialogs.StartProgram");
        started_.push_back(program);
    }

    void SetPerson(Person person) { person_ = std::move(person); }
    int AboutBoxesShown() const { return aboutBoxesShown_; }
    const std::vector<std::filesystem::path>& ProgramsStarted() const { return started_; }

private:
    Person person_;
    int aboutBoxesShown_ = 0;
    std::vector<std::filesystem::path> started_;
};

} // namespace lumora::headless
