// Written sessions as text: what is understood, and the sentences for what is not.
#include "hosts/headless/SessionScript.h"

#include "hosts/headless/Errors.h"
#include "hosts/headless/HeadlessHost.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace lumora::headless
{

namespace
{

RuntimeError ComplaintAbout(const std::string& text)
{
    return FailureOf([&] { ParseSession(text, "walk.txt"); });
}

} // namespace

TEST(SessionScript, lines_become_actions_with_their_numbers)
{
    const SessionScript script =
        ParseSession("# a walk\r\n\r\nsize 800 600\npress middle 10 -20   # there\n"
                     "\tmove 5 -6 400\nkey down numpad5\nhold CTRL\nshot a.PNG\nshot\n"
                     "set FieldOfView=0.25\nview Rear\ncamera 1 2 3 0 0 1 0 1 0\nobstacle sky none",
                     "walk.txt");
    ASSERT_EQ(script.steps.size(), 11U);
    EXPECT_EQ(script.steps[0].line, 3);
    EXPECT_EQ(script.steps[9].line, 12);
    const auto press = std::get<ButtonAction>(script.steps[1].action);
    EXPECT_TRUE(press.down && press.button == mousebutton::Middle && press.at->x == 10 && press.at->y == -20);
    const auto move = std::get<MoveByAction>(script.steps[2].action);
    EXPECT_TRUE(move.x == 5 && move.y == -6 && move.milliseconds == 400);
    EXPECT_EQ(std::get<KeyAction>(script.steps[3].action).code, tdlNavKeyNumpad5);
    EXPECT_EQ(std::get<KeyAction>(script.steps[4].action).code, key::Control);
    EXPECT_EQ(std::get<ShotAction>(script.steps[5].action).name, "a.PNG");
    EXPECT_EQ(std::get<SetAction>(script.steps[7].action).row->name, "FieldOfView");
    EXPECT_EQ(std::get<ViewAction>(script.steps[8].action).view, tdlRearView);
    EXPECT_EQ(std::get<CameraAction>(script.steps[9].action).position, (Vector{1, 2, 3}));
    EXPECT_EQ(std::get<ObstacleAction>(script.steps[10].action).obstacle, Obstacle::None);
    EXPECT_EQ(script.UnnamedShots(), 1);
    EXPECT_EQ(script.InitialSize()->width, 800);
    EXPECT_FALSE(ParseSession("frame\nsize 8 6", "").InitialSize());
    EXPECT_TRUE(ParseSession("", "").steps.empty());
}

TEST(SessionScript, what_is_not_understood_is_named_with_its_line)
{
    struct Row
    {
        const char* text;
        const char* sentence; // a part of it
    };
    for (const auto& [text, sentence] : {
             Row{"frame\n\nmoev 1 2", "walk.txt:3: There is no action \"moev\", did you mean \"move\"?"},
             Row{"move 1", "walk.txt:1: This line should read: move DX DY [MS]"},
             Row{"move 1.5 2", "\"1.5\" is no number from -32767 to 32767 (move DX DY [MS])"},
             Row{"press left 10", "should read: press"},
             Row{"key down Numpad55", "did you mean \"Numpad5\"?"},
             Row{"advance 3600000\nadvance 1", "walk.txt:2: A session lasts an hour at most"},
             Row{"size 0 100", "no number from 1 to 8192"},
             Row{"set FieldOfVeiw=1", "did you mean \"FieldOfView\"?"},
             Row{"set ViewportState=1", "read-only"},
             Row{"camera 0 0 0 0 0 1 0 1 nan", "\"nan\" is no number"},
             Row{"obstacle sky nothing", "did you mean \"none\"?"},
             Row{"shot ../a.png", "without folders"},
             Row{"shot a.gif", "name of a PNG file"},
             Row{"frame\x01", "bytes that are no text"},
         })
    {
        const RuntimeError failure = ComplaintAbout(text);
        EXPECT_EQ(failure.Number(), error::InvalidCall) << text;
        EXPECT_NE(failure.Description().find(sentence), std::string::npos) << text << ": " << failure.Description();
    }
    const std::string zero{"frame\0", 6};
    EXPECT_NE(ComplaintAbout(zero).Description().find("no text"), std::string::npos);
    EXPECT_LT(ComplaintAbout(std::string(100000, 'x')).Description().size(), 200U);
}

TEST(SessionScript, every_action_of_the_help_text_is_one)
{
    std::istringstream help{SessionLanguage()};
    int actions = 0;
    for (std::string line; std::getline(help, line); ++actions)
    {
        const std::string verb = line.substr(2, line.find(' ', 2) - 2);
        const std::string sentence = verb == "click" || verb == "doubleclick" || verb == "frame" || verb == "shot"
                                         ? ComplaintAbout(verb + " 1 2 3").Description()
                                         : ComplaintAbout(verb).Description();
        EXPECT_NE(sentence.find("should read: " + verb), std::string::npos) << line;
        EXPECT_LE(line.size(), 120U) << line;
    }
    EXPECT_GE(actions, 17);
}

TEST(SessionScript, files_are_read_whole_or_not_at_all)
{
    const tests::TemporaryFolder folder;
    folder.Write("good.txt", "frame\n");
    EXPECT_EQ(ReadSession(folder / "good.txt").steps.size(), 1U);
    EXPECT_EQ(ErrorOf([&] { ReadSession(folder / "none.txt"); }), error::FileNotFound);
    EXPECT_EQ(ErrorOf([&] { ReadSession(folder / ""); }), error::PathFileAccess);
    EXPECT_EQ(ErrorOf([&] { ReadSession("/dev/zero"); }), error::PathFileAccess);
    folder.Write("long.txt", std::string(SessionScript::LongestText + 1, '\n'));
    EXPECT_EQ(ErrorOf([&] { ReadSession(folder / "long.txt"); }), error::InvalidCall);
}

} // namespace lumora::headless
