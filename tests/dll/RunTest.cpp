// Acquisition runs driven as a user drives them: the take dialog, the finish
// dialog and the preview window, with what GetNext hands back to the host.
#include <gtest/gtest.h>
#include "RunSupport.h"
#include "hoststub/HostAutomation.h"

namespace {

// The take dialog's buttons in the order their texts and states are recorded.
const std::vector<int> kTakeButtons{IDOK, IDC_BACK, IDC_TAKE_SKIP, IDC_TAKE_QUIT};
// Finish dialog states, in the order of kFinishButtons.
const std::string kEnd = "10101", kMiddle = "11011", kFirst = "01011", kLast = "10011";

// One action of the user: in the next dialog of a kind (the take dialog has the
// picture, the finish dialog the accept button), wait, then press a button.
struct Step {
    int dialog;
    int press;  // kEscape: the Esc key
    int waitMs = 0;
};
constexpr int kEscape = -1;
Step Take(int press, int waitMs = 0) { return {IDC_TAKE_PICTURE, press, waitMs}; }
Step Finish(int press) { return {IDC_FINISH_ACCEPT, press}; }

// A dialog as the user found it, just before pressing.
struct Shown {
    std::string caption;
    std::vector<std::string> texts;  // of the kind's buttons
    std::string enabled;             // '1' or '0' per button
    bool open = false;
    RECT rect{};
};

class Run : public ModuleTest {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(ModuleTest::SetUp());
        cat.AddTemplate(1, "Drei", ThreeTakes());
        cat.AddTemplate(2, "Eine", {{"46", 1, 0, 200, 300}});
    }

    // GetNext with `images` while the user takes `steps`; `shown` records each
    // dialog met and `look` runs on it before the press.
    Delivery Answer(Images images, const std::vector<Step>& steps, bool ask = false,
                    const RECT& hostRect = {0, 0, 844, 698}) {
        shown.clear();
        return WithUser<Delivery>(
            [&] { return Next(host.hwnd(), images, ask, hostRect); },
            [&](DialogDriver& d) {
                for (const Step& s : steps) {
                    HWND dlg = d.WaitFor(s.dialog);
                    ASSERT_NE(nullptr, dlg) << "step " << shown.size() << " found no dialog";
                    Sleep(s.waitMs);
                    if (look) look(dlg);
                    Shown seen;
                    seen.caption = DialogDriver::Text(dlg);
                    const auto& ids = s.dialog == IDC_TAKE_PICTURE ? kTakeButtons : kFinishButtons;
                    for (int id : ids) seen.texts.push_back(DialogDriver::ItemText(dlg, id));
                    seen.enabled = EnabledStates(dlg, ids);
                    seen.open = IsWindowVisible(dlg) != FALSE;
                    GetWindowRect(dlg, &seen.rect);
                    shown.push_back(seen);
                    if (s.press == kEscape)
                        DialogDriver::PressEscape(dlg);
                    else
                        EXPECT_TRUE(DialogDriver::Click(dlg, s.press)) << "cannot press " << s.press;
                }
            });
    }
    // The take dialog's answer to one exposure: the user presses `id`, then
    // Weiter if the dialog comes back.
    Delivery Review(int id) {
        if (id == IDC_BACK || id == IDC_TAKE_SKIP) return Answer(MakeImages(), {Take(id), Take(IDOK)});
        return Answer(MakeImages(), {Take(id)});
    }
    bool Begin(int index = 0) { return StartOn(cat, host.hwnd(), index) && Next(host.hwnd(), {}).result == 2; }
    // The enabled states of the dialogs met in the last Answer, in order.
    std::vector<std::string> Met() const {
        std::vector<std::string> states;
        for (const Shown& s : shown) states.push_back(s.enabled);
        return states;
    }

    std::vector<Shown> shown;
    std::function<void(HWND)> look;
};

TEST_F(Run, WholeTemplateFromFirstTakeToAcceptingTheLast) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    EXPECT_EQ(2, p.GetState());
    Delivery first = Next(host.hwnd(), {});
    EXPECT_EQ(2, first.result);
    EXPECT_EQ("17", first.label);
    EXPECT_EQ(0, first.orientation);
    EXPECT_EQ((RECT{30, 50, 130, 125}), first.rect);

    const Images exposure = MakeImages();
    Delivery second = Answer(exposure, {Take(IDOK)});
    ASSERT_EQ(1u, shown.size());
    EXPECT_EQ("Neu", shown[0].caption);
    EXPECT_EQ((std::vector<std::string>{"Weiter", "&Zur\xFC" "ck", "\xDC" "ber&springen", "&Beenden"}),
              shown[0].texts);
    EXPECT_EQ("1111", shown[0].enabled);
    EXPECT_TRUE(IsFreed(exposure.header) && IsFreed(exposure.bits));
    EXPECT_EQ(3, second.result);
    EXPECT_EQ("11", second.label);
    EXPECT_EQ(1, second.orientation);
    EXPECT_EQ((RECT{230, 50, 305, 150}), second.rect);

    Delivery third = Review(IDOK);
    EXPECT_EQ(4, third.result);
    EXPECT_EQ("36", third.label);
    EXPECT_FALSE(third.done);

    Delivery end = Answer(MakeImages(), {Take(IDOK), Finish(IDC_FINISH_ACCEPT)});
    ASSERT_EQ(2u, shown.size());
    EXPECT_EQ("Aufnahmeschema beenden", shown[1].caption);
    EXPECT_EQ(kEnd, shown[1].enabled);
    EXPECT_EQ(-1, end.result);
    EXPECT_TRUE(end.done);
    EXPECT_EQ(3, p.GetState());
    EXPECT_TRUE(TakeBeeps().empty()) << "accepting at the end gives no beep";
}

TEST_F(Run, TheExposureIsPaintedFittedAndCentred) {
    ASSERT_TRUE(Begin());
    const COLORREF colour = RGB(10, 200, 90);
    for (SIZE image : {SIZE{64, 48}, SIZE{1200, 300}}) {
        RECT area{}, box{};
        look = [&](HWND dlg) {
            HWND picture = GetDlgItem(dlg, IDC_TAKE_PICTURE);
            GetClientRect(picture, &area);
            box = PaintedBox(picture, colour);
        };
        Answer(MakeImages(image.cx, image.cy, colour), {Take(IDOK)});
        const int w = box.right - box.left, h = box.bottom - box.top;
        const int rw = area.right - 1, rh = area.bottom - 1;  // the last column and row stay free
        ASSERT_GT(w, 0) << image.cx << ": the exposure is not painted";
        if (image.cx <= rw && image.cy <= rh) {
            EXPECT_EQ(image.cx, w) << "never enlarged";
            EXPECT_EQ(image.cy, h);
        } else {
            EXPECT_EQ(rw, w) << "reduced to the width of the area";
            EXPECT_NEAR(static_cast<double>(image.cy) / image.cx, static_cast<double>(h) / w,
                        1.0 / w)
                << "one factor for both directions";
        }
        EXPECT_NEAR(rw, box.left + box.right, 1) << image.cx << ": centred across";
        EXPECT_NEAR(rh, box.top + box.bottom, 1) << image.cx << ": centred down";
    }
}

TEST_F(Run, BackRepeatsAndSkipJumpsButNeverPastTheEnds) {
    const struct {
        std::vector<int> presses;
        std::vector<std::string> labels;  // delivered after each press
    } cases[] = {
        {{IDC_TAKE_SKIP, IDC_BACK}, {"36", "36"}},  // take 2 skipped, then take 3 repeated
        {{IDOK, IDC_TAKE_SKIP}, {"11", "36"}},      // Überspringen at the last take stays there
        {{IDC_BACK}, {"17"}},                       // Zurück at the first take stays there
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(Begin());
        for (size_t i = 0; i < c.presses.size(); ++i)
            EXPECT_EQ(c.labels[i], Review(c.presses[i]).label) << c.presses[0] << " step " << i;
        EXPECT_EQ(2, p.GetState());
        p.Stop();
    }
}

TEST_F(Run, BeendenInTheTakeDialogEndsTheRunWithAnErrorBeep) {
    ASSERT_TRUE(Begin());
    Images im = MakeImages();
    Delivery d = Answer(im, {Take(IDC_TAKE_QUIT)});
    EXPECT_EQ(-1, d.result);
    EXPECT_EQ(3, p.GetState());
    EXPECT_TRUE(IsFreed(im.header) && IsFreed(im.bits));
    EXPECT_EQ((std::vector<UINT>{MB_ICONHAND}), TakeBeeps());
}

TEST_F(Run, StopFromTheHostDuringTheReviewEndsGetNextWithZero) {
    ASSERT_TRUE(Begin());
    look = [&](HWND) {
        PostMessageA(host.hwnd(), kHostStopRun, 0, 0);
        for (int i = 0; i < 100 && p.GetState() == 2; ++i) Sleep(20);
    };
    const Images exposure = MakeImages();
    Delivery d = Answer(exposure, {Take(IDOK)});
    EXPECT_EQ(3, p.GetState()) << "the host's Stop ended the run";
    EXPECT_EQ(0, d.result) << "no template left to deliver from";
    EXPECT_EQ("", d.label);
    EXPECT_TRUE(IsFreed(exposure.header) && IsFreed(exposure.bits));
}

TEST_F(Run, TimerGoesOnByItselfUntilBackOrSkip) {
    cat.Set("Application", "PreviewTimeout", "1");
    ASSERT_TRUE(Begin());
    const DWORD t0 = GetTickCount();
    Delivery automatic = Next(host.hwnd(), MakeImages());  // nobody clicks
    const DWORD elapsed = GetTickCount() - t0;
    EXPECT_EQ(3, automatic.result);
    EXPECT_GE(elapsed, 900u);
    EXPECT_LT(elapsed, 5000u);
    for (int press : {IDC_BACK, IDC_TAKE_SKIP}) {
        Delivery d = Answer(MakeImages(), {Take(press), Take(IDOK, 1800)});
        ASSERT_EQ(2u, shown.size());
        EXPECT_TRUE(shown[1].open) << press << ": shown again, the dialog waits for the user";
        EXPECT_GT(d.result, 0);
    }
}

TEST_F(Run, MovedTakeDialogComesBackWhereTheUserLeftIt) {
    ASSERT_TRUE(Begin());
    look = [&](HWND dlg) {
        if (shown.empty()) SetWindowPos(dlg, nullptr, 37, 41, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    };
    Answer(MakeImages(), {Take(IDC_BACK), Take(IDOK)});
    ASSERT_EQ(2u, shown.size());
    EXPECT_EQ(37, shown[0].rect.left);
    EXPECT_EQ(shown[0].rect, shown[1].rect);
}

TEST_F(Run, FinishDialogStatesWhileSteppingAtTheEnd) {
    ASSERT_TRUE(Begin());
    Review(IDOK);
    Review(IDOK);  // take 3 delivered, P = 4
    Delivery d = Answer(MakeImages(), {Take(IDOK), Finish(IDC_BACK), Finish(IDC_FINISH_SKIP),
                                       Finish(IDC_FINISH_NEXT)});
    // After Zurück P = 3; skipping at P = N stays there.
    EXPECT_EQ((std::vector<std::string>{"1111", kEnd, kMiddle, kLast}), Met());
    EXPECT_EQ(4, d.result);
    EXPECT_EQ("36", d.label) << "Weiter after Zurück delivers the last take again";
    EXPECT_TRUE(d.done);
}

TEST_F(Run, OneTakeTemplateBackGivesTheFirstTakeState) {
    ASSERT_TRUE(Begin(1));
    Delivery d = Answer(MakeImages(), {Take(IDOK), Finish(IDC_BACK), Finish(IDC_FINISH_QUIT)});
    EXPECT_EQ((std::vector<std::string>{"1111", kEnd, kFirst}), Met());
    EXPECT_EQ(-1, d.result);
    EXPECT_EQ(3, p.GetState());
    EXPECT_TRUE(TakeBeeps().empty()) << "ending at the end of the template is silent";
}

TEST_F(Run, StepBackAndAskRepeatsOrEndsWithAPlainBeep) {
    ASSERT_TRUE(Begin());
    Review(IDOK);  // take 2 delivered, P = 3
    Delivery again = Answer({}, {Finish(IDC_FINISH_NEXT)}, true);
    EXPECT_EQ(kMiddle, shown.at(0).enabled);
    EXPECT_EQ(3, again.result);
    EXPECT_EQ("11", again.label);
    EXPECT_FALSE(again.done);

    Delivery ended = Answer({}, {Finish(IDC_FINISH_QUIT)}, true);
    EXPECT_EQ(-1, ended.result);
    EXPECT_EQ(3, p.GetState());
    EXPECT_EQ((std::vector<UINT>{MB_OK}), TakeBeeps());
}

TEST_F(Run, AskingAtTheFirstTakeThenSkippingThisExposure) {
    ASSERT_TRUE(Begin());  // take 1 delivered, P = 2
    Delivery d = Answer({}, {Finish(IDC_BACK), Finish(IDC_FINISH_SKIP), Finish(IDC_FINISH_NEXT)}, true);
    // The middle state even at take 1; Zurück finds no take before the first.
    EXPECT_EQ((std::vector<std::string>{kMiddle, kFirst, kMiddle}), Met());
    EXPECT_EQ(3, d.result);
    EXPECT_EQ("11", d.label) << "take 1 skipped: take 2 comes next";

    d = Answer({}, {Finish(IDC_FINISH_SKIP), Finish(IDC_FINISH_NEXT)}, true);  // back to 2, on to 3
    EXPECT_EQ((std::vector<std::string>{kMiddle, kLast}), Met());
    EXPECT_EQ("36", d.label);
    EXPECT_FALSE(d.done);
    EXPECT_TRUE(TakeBeeps().empty());
}

TEST_F(Run, EscapeAtTheEndFailsTheDeliveryButKeepsTheRun) {
    ASSERT_TRUE(Begin(1));
    Delivery d = Answer(MakeImages(), {Take(IDOK), Finish(kEscape)});
    EXPECT_EQ(-1, d.result);
    EXPECT_EQ("", d.label);
    EXPECT_TRUE(d.done);
    EXPECT_EQ(2, p.GetState()) << "the run stays until the host stops it";
    EXPECT_TRUE(p.Stop());
}

TEST_F(Run, MappingScalesWithTheHostRectangleNotItsPlace) {
    cat.AddTemplate(3, "Map", {{"11", 1, 0, 70, 50}, {"21", 1, 0, 170, 150}});
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 2));
    Delivery a = Next(host.hwnd(), {}, false, {100, 100, 100 + 422, 100 + 349});
    EXPECT_EQ((RECT{0, 0, 50, 37}), a.rect);
    Delivery b = Answer(MakeImages(), {Take(IDOK)}, false, {0, 0, 800, 600});
    // (170,150)-(270,225) moved by (-70,-50) and scaled by 800/844, 600/698.
    EXPECT_EQ((RECT{94, 85, 189, 150}), b.rect);
}

TEST_F(Run, BrokenImagesAreShownAsNothingAndFreed) {
    ASSERT_TRUE(Begin());
    Images shortHeader{GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 8), MakeImages().bits};
    Images hugeImage = MakeImages(64, 48);
    {
        auto* bi = static_cast<BITMAPINFOHEADER*>(GlobalLock(hugeImage.header));
        bi->biWidth = 20000;
        bi->biHeight = -20000;
        GlobalUnlock(hugeImage.header);
    }
    look = [](HWND dlg) { UpdateWindow(dlg); };
    for (const Images& im : {shortHeader, hugeImage}) {
        EXPECT_GT(Answer(im, {Take(IDOK)}).result, 0);
        EXPECT_TRUE(IsFreed(im.header) && IsFreed(im.bits));
    }
}

TEST_F(Run, TextsComeFromTheHostsLanguageDatabase) {
    testing_support::WriteText(cat.folder() + "lexicon.ini",
                               "[ZEMBLAX_1033]\r\n2.15045=Exposure\r\n2.1=Next\r\n2.1003=&Back\r\n"
                               "2.15001=Choose template\r\n1.2=Cancel\r\n2.1000=End template\r\n");
    hoststub::AutomationOptions options;
    options.userLanguage = 1033;
    options.lexiconFile = cat.folder() + "lexicon.ini";
    ASSERT_TRUE(hoststub::RegisterAutomation(options));
    p.Initialize(cat.base().c_str());
    std::string selCaption, cancel, ok;
    ASSERT_TRUE(WithUser<BOOL>([&] { return p.Start(host.hwnd()); }, [&](DialogDriver& d) {
        HWND dlg = d.WaitFor(IDC_SELECTION_LIST);
        ASSERT_NE(nullptr, dlg);
        selCaption = DialogDriver::Text(dlg);
        cancel = DialogDriver::ItemText(dlg, IDCANCEL);
        ok = DialogDriver::ItemText(dlg, IDOK);
        DialogDriver::Click(dlg, IDOK);
    }));
    Next(host.hwnd(), {});
    Answer(MakeImages(), {Take(IDOK)});
    hoststub::RevokeAutomation();
    EXPECT_EQ("Choose template", selCaption);
    EXPECT_EQ("Cancel", cancel);
    EXPECT_EQ("OK", ok) << "no translation: the resource text stays";
    ASSERT_EQ(1u, shown.size());
    EXPECT_EQ("Exposure", shown[0].caption);
    EXPECT_EQ((std::vector<std::string>{"Next", "&Back", "\xDC" "ber&springen", "&Beenden"}),
              shown[0].texts);
    EXPECT_GE(hoststub::Stats().sectionsOpened, 2) << "each dialog opens the section anew";
    EXPECT_EQ(hoststub::Stats().sectionsOpened, hoststub::Stats().sectionsClosed);
}

}  // namespace
