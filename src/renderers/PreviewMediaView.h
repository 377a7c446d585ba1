#pragma once

#include "toolkit/PreviewContentView.h"

#include <QMediaPlayer>

class QAudioOutput;
class QLabel;
class QSlider;
class QToolButton;
class QVideoWidget;

namespace vl {

// Audio or video through QtMultimedia: the picture (or, for audio, the item's icon and name)
// above the standard player controls: play / pause, a position slider to seek, the time played
// and left. Without the standard controls the file plays by itself and a tap pauses or resumes.
class PreviewMediaView : public PreviewContentView {
    Q_OBJECT
public:
    enum class State { Loading, Ready, Playing, Paused, Ended, Failed };

    PreviewMediaView(const Url& url, bool video, bool standardControls, QWidget* parent = nullptr);
    ~PreviewMediaView() override;

    State state() const { return state_; }
    static QString stateName(State state);
    QMediaPlayer* player() const { return player_; }
    QToolButton* playButton() const { return playButton_; }
    QSlider* positionSlider() const { return slider_; }
    bool hasStandardControls() const { return standardControls_; }

    void play();
    void pause();
    // Play when paused or stopped (from the start once the end was reached), else pause.
    void togglePlayback();
    void seek(qint64 milliseconds);

    // What the view shows for the player's state; an error wins over everything.
    static State stateFor(QMediaPlayer::PlaybackState playback, QMediaPlayer::MediaStatus media,
                          QMediaPlayer::Error error);

signals:
    void stateChanged(State state);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* makeControls();
    QWidget* makeAudioPage();
    void updateState();
    void updatePosition();

    bool video_;
    bool standardControls_;
    State state_ = State::Loading;
    QMediaPlayer* player_ = nullptr;
    QAudioOutput* audio_ = nullptr;
    QVideoWidget* videoWidget_ = nullptr;
    QToolButton* playButton_ = nullptr;
    QSlider* slider_ = nullptr;
    QLabel* elapsed_ = nullptr;
    QLabel* remaining_ = nullptr;
    bool sliding_ = false;
};

}  // namespace vl
