// Acquisition runs driven as a user drives them: the take dialog, the finish
// dialog and the preview window, with what GetNext hands back to the host.
#include <gtest/gtest.h>
#include "RunSupport.h"
#include "hoststub/HostAutomation.h"
#include "res/resource.h"

namespace {

constexpr int kPicture = IDC_TAKE_PICTURE, kBack = IDC_BACK, kSkip = IDC_TAKE_SKIP,
              kQuit = IDC_TAKE_QUIT;
constexpr int kFinSkip = IDC_FINISH_SKIP, kFinAccept = IDC_FINISH_ACCEPT, kFinNext = IDC_FINISH_NEXT;

struct ButtonStates {
    bool back, skip, accept, next, quit;
    bool operator==(const ButtonStates& o) const {
        return back == o.back && skip == o.skip && accept == o.accept && next == o.next &&
               quit == o.quit;
    }
};

ButtonStates StatesOf(HWND dlg) {
    return {DialogDriver::Enabled(dlg, kBack), DialogDriver::Enabled(dlg, kFinSkip),
            DialogDriver::Enabled(dlg, kFinAccept), DialogDriver::Enabled(dlg, kFinNext),
            DialogDriver::Enabled(dlg, kQuit)};
}

std::ostream& operator<<(std::ostream& os, const ButtonStates& s) {
    return os << s.back << s.skip << s.accept << s.next << s.quit;
}

const ButtonStates kEnd{1, 0, 1, 0, 1}, kMiddle{1, 1, 0, 1, 1}, kFirst{0, 1, 0, 1, 1},
    kLast{1, 0, 0, 1, 1};

class Run : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(p.loaded);
        ResetModule();
        cat.AddTemplate(1, "Drei", ThreeTakes());
        cat.AddTemplate(2, "Eine", {{"46", 1, 0, 200, 300}});
    }
    void TearDown() override { ResetModule(); }

    // The take dialog's answer to one exposure: the user presses `id`.
    Delivery Review(int id) {
        return WithUser<Delivery>([&] { return Next(host.hwnd(), MakeImages()); },
                                  [&](DialogDriver& d) {
                                      HWND dlg = d.WaitFor(kPicture);
                                      ASSERT_NE(nullptr, dlg);
                                      EXPECT_TRUE(DialogDriver::Click(dlg, id));
                                      if (id == kBack || id == kSkip) {
                                          HWND again = d.WaitFor(kPicture);
                                          ASSERT_NE(nullptr, again);
                                          DialogDriver::Click(again, IDOK);
                                      }
                                  });
    }

    PluginHost& p = PluginHost::Get();
    HostWindow host;
    Catalog cat;
};

TEST_F(Run, StopFromTheHostDuringTheReviewEndsGetNextWithZero) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    Next(host.hwnd(), {});
    const Images exposure = MakeImages();
    Delivery d = WithUser<Delivery>([&] { return Next(host.hwnd(), exposure); },
                                    [&](DialogDriver& u) {
                                        HWND dlg = u.WaitFor(kPicture);
                                        ASSERT_NE(nullptr, dlg);
                                        PostMessageA(host.hwnd(), kHostStopRun, 0, 0);
                                        for (int i = 0; i < 100 && p.GetState() == 2; ++i)
                                            Sleep(20);
                                        DialogDriver::Click(dlg, IDOK);
                                    });
    EXPECT_EQ(3, p.GetState()) << "the host's Stop ended the run";
    EXPECT_EQ(0, d.result) << "no template left to deliver from";
    EXPECT_EQ("", d.label);
    EXPECT_TRUE(IsFreed(exposure.header));
    EXPECT_TRUE(IsFreed(exposure.bits));
}

TEST_F(Run, WholeTemplateFromFirstTakeToAcceptingTheLast) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    EXPECT_EQ(2, p.GetState());

    Delivery first = Next(host.hwnd(), {});
    EXPECT_EQ(2, first.result);
    EXPECT_EQ("17", first.label);
    EXPECT_EQ(0, first.orientation);
    EXPECT_EQ((RECT{30, 50, 130, 125}), first.rect);

    std::string caption, next, back, skip, quit;
    const Images exposure = MakeImages();
    Delivery second = WithUser<Delivery>([&] { return Next(host.hwnd(), exposure); },
                                         [&](DialogDriver& d) {
                                             HWND dlg = d.WaitFor(kPicture);
                                             ASSERT_NE(nullptr, dlg);
                                             caption = DialogDriver::Text(dlg);
                                             next = DialogDriver::ItemText(dlg, IDOK);
                                             back = DialogDriver::ItemText(dlg, kBack);
                                             skip = DialogDriver::ItemText(dlg, kSkip);
                                             quit = DialogDriver::ItemText(dlg, kQuit);
                                             DialogDriver::Click(dlg, IDOK);
                                         });
    EXPECT_EQ("Neu", caption);
    EXPECT_EQ("Weiter", next);
    EXPECT_EQ("&Zur\xFC" "ck", back);
    EXPECT_EQ("\xDC" "ber&springen", skip);
    EXPECT_EQ("&Beenden", quit);
    EXPECT_TRUE(IsFreed(exposure.header) && IsFreed(exposure.bits));
    EXPECT_EQ(3, second.result);
    EXPECT_EQ("11", second.label);
    EXPECT_EQ(1, second.orientation);
    EXPECT_EQ((RECT{230, 50, 305, 150}), second.rect);

    Delivery third = Review(IDOK);
    EXPECT_EQ(4, third.result);
    EXPECT_EQ("36", third.label);
    EXPECT_FALSE(third.done);

    ButtonStates states{};
    std::string finishCaption;
    Delivery end = WithUser<Delivery>([&] { return Next(host.hwnd(), MakeImages()); },
                                      [&](DialogDriver& d) {
                                          HWND review = d.WaitFor(kPicture);
                                          ASSERT_NE(nullptr, review);
                                          DialogDriver::Click(review, IDOK);
                                          HWND fin = d.WaitFor(kFinAccept);
                                          ASSERT_NE(nullptr, fin);
                                          finishCaption = DialogDriver::Text(fin);
                                          states = StatesOf(fin);
                                          DialogDriver::Click(fin, kFinAccept);
                                      });
    EXPECT_EQ("Aufnahmeschema beenden", finishCaption);
    EXPECT_EQ(kEnd, states);
    EXPECT_EQ(-1, end.result);
    EXPECT_TRUE(end.done);
    EXPECT_EQ(3, p.GetState());
    EXPECT_TRUE(TakeBeeps().empty()) << "accepting at the end gives no beep";
}

TEST_F(Run, BackRepeatsTheTakeAndSkipJumpsOverOne) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    Next(host.hwnd(), {});
    Delivery skipped = Review(kSkip);  // after take 1: Überspringen, Weiter
    EXPECT_EQ(4, skipped.result);
    EXPECT_EQ("36", skipped.label) << "take 2 is skipped";
    Delivery again = Review(kBack);
    EXPECT_EQ(4, again.result);
    EXPECT_EQ("36", again.label) << "Zurück then Weiter repeats the exposure";
}

TEST_F(Run, SkipAtTheLastTakeStaysThere) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    Next(host.hwnd(), {});
    EXPECT_EQ("11", Review(IDOK).label);  // P = 3 = N
    Delivery last = Review(kSkip);
    EXPECT_EQ(4, last.result);
    EXPECT_EQ("36", last.label);
}

TEST_F(Run, BackAtTheFirstTakeStaysThere) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    Next(host.hwnd(), {});
    // P = 2: one Zurück gives P = 1 ...
    EXPECT_EQ("17", Review(kBack).label);
    EXPECT_EQ(2, p.GetState());
}

TEST_F(Run, BeendenInTheTakeDialogEndsTheRunWithAnErrorBeep) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    Next(host.hwnd(), {});
    Images im = MakeImages();
    Delivery d = WithUser<Delivery>([&] { return Next(host.hwnd(), im); }, [&](DialogDriver& drv) {
        HWND dlg = drv.WaitFor(kPicture);
        ASSERT_NE(nullptr, dlg);
        DialogDriver::Click(dlg, kQuit);
    });
    EXPECT_EQ(-1, d.result);
    EXPECT_EQ(3, p.GetState());
    EXPECT_TRUE(IsFreed(im.header) && IsFreed(im.bits));
    EXPECT_EQ((std::vector<UINT>{MB_ICONHAND}), TakeBeeps());
}

TEST_F(Run, TimerGoesOnByItselfButNotAfterBack) {
    cat.Set("Application", "PreviewTimeout", "1");
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    Next(host.hwnd(), {});
    const DWORD t0 = GetTickCount();
    Delivery automatic = Next(host.hwnd(), MakeImages());  // nobody clicks
    const DWORD elapsed = GetTickCount() - t0;
    EXPECT_EQ(3, automatic.result);
    EXPECT_GE(elapsed, 900u);
    EXPECT_LT(elapsed, 5000u);

    bool stillOpen = false;
    Delivery d = WithUser<Delivery>([&] { return Next(host.hwnd(), MakeImages()); },
                                    [&](DialogDriver& drv) {
                                        HWND dlg = drv.WaitFor(kPicture);
                                        ASSERT_NE(nullptr, dlg);
                                        DialogDriver::Click(dlg, kBack);
                                        HWND again = drv.WaitFor(kPicture);
                                        ASSERT_NE(nullptr, again);
                                        Sleep(1800);
                                        stillOpen = IsWindow(again) && IsWindowVisible(again);
                                        DialogDriver::Click(again, IDOK);
                                    });
    EXPECT_TRUE(stillOpen) << "after Zurück the dialog waits for the user";
    EXPECT_EQ(3, d.result);
}

TEST_F(Run, MovedTakeDialogComesBackWhereTheUserLeftIt) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    Next(host.hwnd(), {});
    RECT first{}, second{};
    WithUser<Delivery>([&] { return Next(host.hwnd(), MakeImages()); }, [&](DialogDriver& d) {
        HWND dlg = d.WaitFor(kPicture);
        ASSERT_NE(nullptr, dlg);
        SetWindowPos(dlg, nullptr, 37, 41, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        GetWindowRect(dlg, &first);
        DialogDriver::Click(dlg, kBack);
        HWND again = d.WaitFor(kPicture);
        ASSERT_NE(nullptr, again);
        GetWindowRect(again, &second);
        DialogDriver::Click(again, IDOK);
    });
    EXPECT_EQ(37, first.left);
    EXPECT_EQ(first, second);
}

TEST_F(Run, FinishDialogStatesWhileSteppingAtTheEnd) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    Next(host.hwnd(), {});
    Review(IDOK);
    Review(IDOK);  // take 3 delivered, P = 4
    std::vector<ButtonStates> seen;
    Delivery d = WithUser<Delivery>([&] { return Next(host.hwnd(), MakeImages()); },
                                    [&](DialogDriver& drv) {
                                        HWND review = drv.WaitFor(kPicture);
                                        ASSERT_NE(nullptr, review);
                                        DialogDriver::Click(review, IDOK);
                                        HWND fin = drv.WaitFor(kFinAccept);
                                        ASSERT_NE(nullptr, fin);
                                        seen.push_back(StatesOf(fin));
                                        EXPECT_FALSE(DialogDriver::Click(fin, kFinNext));
                                        DialogDriver::Click(fin, kBack);  // P = 3
                                        HWND fin2 = drv.WaitFor(kFinAccept);
                                        ASSERT_NE(nullptr, fin2);
                                        seen.push_back(StatesOf(fin2));
                                        DialogDriver::Click(fin2, kFinSkip);  // P stays 3 = N
                                        HWND fin3 = drv.WaitFor(kFinAccept);
                                        ASSERT_NE(nullptr, fin3);
                                        seen.push_back(StatesOf(fin3));
                                        DialogDriver::Click(fin3, kFinNext);
                                    });
    ASSERT_EQ(3u, seen.size());
    EXPECT_EQ(kEnd, seen[0]);
    EXPECT_EQ(kMiddle, seen[1]);
    EXPECT_EQ(kLast, seen[2]);
    EXPECT_EQ(4, d.result);
    EXPECT_EQ("36", d.label) << "Weiter after Zurück delivers the last take again";
    EXPECT_TRUE(d.done);
}

TEST_F(Run, OneTakeTemplateBackGivesTheFirstTakeState) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 1));
    EXPECT_EQ(2, Next(host.hwnd(), {}).result);
    std::vector<ButtonStates> seen;
    Delivery d = WithUser<Delivery>([&] { return Next(host.hwnd(), MakeImages()); },
                                    [&](DialogDriver& drv) {
                                        DialogDriver::Click(drv.WaitFor(kPicture), IDOK);
                                        HWND fin = drv.WaitFor(kFinAccept);
                                        ASSERT_NE(nullptr, fin);
                                        seen.push_back(StatesOf(fin));
                                        DialogDriver::Click(fin, kBack);
                                        HWND fin2 = drv.WaitFor(kFinAccept);
                                        ASSERT_NE(nullptr, fin2);
                                        seen.push_back(StatesOf(fin2));
                                        DialogDriver::Click(fin2, kQuit);
                                    });
    ASSERT_EQ(2u, seen.size());
    EXPECT_EQ(kEnd, seen[0]);
    EXPECT_EQ(kFirst, seen[1]);
    EXPECT_EQ(-1, d.result);
    EXPECT_EQ(3, p.GetState());
}

TEST_F(Run, StepBackAndAskRepeatsOrEndsWithAPlainBeep) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    Next(host.hwnd(), {});
    Review(IDOK);  // take 2 delivered, P = 3
    ButtonStates state{};
    Delivery again = WithUser<Delivery>([&] { return Next(host.hwnd(), {}, true); },
                                        [&](DialogDriver& drv) {
                                            HWND fin = drv.WaitFor(kFinAccept);
                                            ASSERT_NE(nullptr, fin);
                                            state = StatesOf(fin);
                                            DialogDriver::Click(fin, kFinNext);
                                        });
    EXPECT_EQ(kMiddle, state);
    EXPECT_EQ(3, again.result);
    EXPECT_EQ("11", again.label);
    EXPECT_FALSE(again.done);

    Delivery ended = WithUser<Delivery>([&] { return Next(host.hwnd(), {}, true); },
                                        [&](DialogDriver& drv) {
                                            DialogDriver::Click(drv.WaitFor(kFinAccept), kQuit);
                                        });
    EXPECT_EQ(-1, ended.result);
    EXPECT_EQ(3, p.GetState());
    EXPECT_EQ((std::vector<UINT>{MB_OK}), TakeBeeps());
}

TEST_F(Run, EscapeAtTheEndFailsTheDeliveryButKeepsTheRun) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 1));
    Next(host.hwnd(), {});
    Delivery d = WithUser<Delivery>([&] { return Next(host.hwnd(), MakeImages()); },
                                    [&](DialogDriver& drv) {
                                        DialogDriver::Click(drv.WaitFor(kPicture), IDOK);
                                        HWND fin = drv.WaitFor(kFinAccept);
                                        ASSERT_NE(nullptr, fin);
                                        DialogDriver::PressEscape(fin);
                                    });
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
    Delivery b = WithUser<Delivery>(
        [&] { return Next(host.hwnd(), MakeImages(), false, {0, 0, 800, 600}); },
        [&](DialogDriver& drv) { DialogDriver::Click(drv.WaitFor(kPicture), IDOK); });
    // (170,150)-(270,225) moved by (-70,-50) and scaled by 800/844, 600/698.
    EXPECT_EQ((RECT{94, 85, 189, 150}), b.rect);
}



TEST_F(Run, BrokenImagesAreShownAsNothingAndFreed) {
    ASSERT_TRUE(StartOn(cat, host.hwnd(), 0));
    Next(host.hwnd(), {});
    Images shortHeader{GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 8), MakeImages().bits};
    Images hugeImage = MakeImages(64, 48);
    {
        auto* bi = static_cast<BITMAPINFOHEADER*>(GlobalLock(hugeImage.header));
        bi->biWidth = 20000;
        bi->biHeight = -20000;
        GlobalUnlock(hugeImage.header);
    }
    for (const Images& im : {shortHeader, hugeImage}) {
        Delivery d = WithUser<Delivery>([&] { return Next(host.hwnd(), im); }, [&](DialogDriver& drv) {
            HWND dlg = drv.WaitFor(kPicture);
            ASSERT_NE(nullptr, dlg);
            UpdateWindow(dlg);
            DialogDriver::Click(dlg, IDOK);
        });
        EXPECT_GT(d.result, 0);
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
        HWND dlg = d.WaitFor(15014);
        ASSERT_NE(nullptr, dlg);
        selCaption = DialogDriver::Text(dlg);
        cancel = DialogDriver::ItemText(dlg, IDCANCEL);
        ok = DialogDriver::ItemText(dlg, IDOK);
        DialogDriver::Click(dlg, IDOK);
    }));
    Next(host.hwnd(), {});
    std::string caption, next, back, skip;
    WithUser<Delivery>([&] { return Next(host.hwnd(), MakeImages()); }, [&](DialogDriver& d) {
        HWND dlg = d.WaitFor(kPicture);
        ASSERT_NE(nullptr, dlg);
        caption = DialogDriver::Text(dlg);
        next = DialogDriver::ItemText(dlg, IDOK);
        back = DialogDriver::ItemText(dlg, kBack);
        skip = DialogDriver::ItemText(dlg, kSkip);
        DialogDriver::Click(dlg, IDOK);
    });
    hoststub::RevokeAutomation();
    EXPECT_EQ("Choose template", selCaption);
    EXPECT_EQ("Cancel", cancel);
    EXPECT_EQ("OK", ok) << "no translation: the resource text stays";
    EXPECT_EQ("Exposure", caption);
    EXPECT_EQ("Next", next);
    EXPECT_EQ("&Back", back);
    EXPECT_EQ("\xDC" "ber&springen", skip);
    EXPECT_GE(hoststub::Stats().sectionsOpened, 2) << "each dialog opens the section anew";
    EXPECT_EQ(hoststub::Stats().sectionsOpened, hoststub::Stats().sectionsClosed);
}

}  // namespace
