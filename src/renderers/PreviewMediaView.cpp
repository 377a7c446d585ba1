#include "renderers/PreviewMediaView.h"

#include "platform/files/ContentTypeRegistry.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "toolkit/ToolkitIcons.h"

#include <QAudioOutput>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QSlider>
#include <QStyle>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>
#include <QVideoWidget>

namespace vl {

namespace {

QString timeText(qint64 milliseconds) {
    const qint64 seconds = std::max<qint64>(0, milliseconds / 1000);
    const qint64 hours = seconds / 3600;
    const QString minutesAndSeconds = QStringLiteral("%1:%2")
                                          .arg(hours > 0 ? (seconds / 60) % 60 : seconds / 60,
                                               hours > 0 ? 2 : 1, 10, QLatin1Char('0'))
                                          .arg(seconds % 60, 2, 10, QLatin1Char('0'));
    return hours > 0 ? QStringLiteral("%1:%2").arg(hours).arg(minutesAndSeconds)
                     : minutesAndSeconds;
}

}  // namespace

PreviewMediaView::PreviewMediaView(const Url& url, bool video, bool standardControls,
                                   QWidget* parent)
    : PreviewContentView(url, parent),
      video_(video),
      standardControls_(standardControls),
      player_(new QMediaPlayer(this)),
      audio_(new QAudioOutput(this)) {
    player_->setAudioOutput(audio_);
    auto* content = new QWidget(this);
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    if (video_) {
        videoWidget_ = new QVideoWidget(content);
        videoWidget_->setObjectName(QStringLiteral("previewVideo"));
        videoWidget_->setAccessibleName(url.lastPathComponent());
        QPalette palette = videoWidget_->palette();
        palette.setColor(QPalette::Window, Qt::black);
        videoWidget_->setPalette(palette);
        videoWidget_->setAutoFillBackground(true);
        videoWidget_->installEventFilter(this);
        player_->setVideoOutput(videoWidget_);
        layout->addWidget(videoWidget_, 1);
    } else {
        layout->addWidget(makeAudioPage(), 1);
    }
    QWidget* controls = makeControls();
    controls->setVisible(standardControls_);
    layout->addWidget(controls);
    setContentWidget(content);

    connect(player_, &QMediaPlayer::playbackStateChanged, this, &PreviewMediaView::updateState);
    connect(player_, &QMediaPlayer::mediaStatusChanged, this, &PreviewMediaView::updateState);
    connect(player_, &QMediaPlayer::errorOccurred, this, &PreviewMediaView::updateState);
    connect(player_, &QMediaPlayer::positionChanged, this, &PreviewMediaView::updatePosition);
    connect(player_, &QMediaPlayer::durationChanged, this, &PreviewMediaView::updatePosition);
    player_->setSource(QUrl::fromLocalFile(url.path()));
    updateState();
}

PreviewMediaView::~PreviewMediaView() {
    // Stop before the outputs go, so the pipeline never writes to a deleted sink.
    player_->stop();
}

QWidget* PreviewMediaView::makeAudioPage() {
    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("previewAudio"));
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(32, 32, 32, 32);
    layout->setSpacing(12);
    layout->addStretch(1);
    const ContentTypeRegistry& registry = ContentTypeRegistry::shared();
    const QString type = registry.identifierForFileName(url().lastPathComponent(), false);
    auto* icon = new QLabel(page);
    icon->setPixmap(
        ToolkitIcons::icon(registry.genericIconName(type), QStringLiteral("audio-x-generic"))
            .pixmap(128, 128));
    icon->setAlignment(Qt::AlignCenter);
    icon->setAccessibleName(registry.localizedDescription(type));
    layout->addWidget(icon);
    auto* name = new QLabel(url().lastPathComponent(), page);
    name->setAlignment(Qt::AlignCenter);
    name->setWordWrap(true);
    QFont font = name->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.3);
    name->setFont(font);
    layout->addWidget(name);
    layout->addStretch(2);
    return page;
}

QWidget* PreviewMediaView::makeControls() {
    auto* bar = new QWidget(this);
    bar->setObjectName(QStringLiteral("previewMediaControls"));
    bar->setAutoFillBackground(true);
    QPalette palette = bar->palette();
    palette.setColor(QPalette::Window, QColor(0xf2, 0xf2, 0xf7));
    bar->setPalette(palette);
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(12, 8, 16, 8);
    layout->setSpacing(12);

    playButton_ = new QToolButton(bar);
    playButton_->setObjectName(QStringLiteral("previewPlayButton"));
    playButton_->setMinimumSize(48, 48);
    playButton_->setIconSize(QSize(28, 28));
    playButton_->setAutoRaise(true);
    playButton_->setEnabled(false);
    connect(playButton_, &QToolButton::clicked, this, &PreviewMediaView::togglePlayback);
    layout->addWidget(playButton_);

    elapsed_ = new QLabel(timeText(0), bar);
    elapsed_->setObjectName(QStringLiteral("previewMediaElapsed"));
    elapsed_->setMinimumWidth(
        elapsed_->fontMetrics().horizontalAdvance(QStringLiteral("00:00:00")));
    elapsed_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    layout->addWidget(elapsed_);

    slider_ = new QSlider(Qt::Horizontal, bar);
    slider_->setObjectName(QStringLiteral("previewMediaPosition"));
    slider_->setAccessibleName(Strings::localized("Position"));
    slider_->setMinimumHeight(44);
    slider_->setEnabled(false);
    connect(slider_, &QSlider::sliderPressed, this, [this] { sliding_ = true; });
    connect(slider_, &QSlider::sliderReleased, this, [this] {
        sliding_ = false;
        seek(slider_->value());
    });
    connect(slider_, &QSlider::actionTriggered, this, [this](int action) {
        // Taps on the groove and keys move the slider without a press.
        if (action != QAbstractSlider::SliderMove && !sliding_) {
            seek(slider_->sliderPosition());
        }
    });
    layout->addWidget(slider_, 1);

    remaining_ = new QLabel(timeText(0), bar);
    remaining_->setObjectName(QStringLiteral("previewMediaRemaining"));
    remaining_->setMinimumWidth(elapsed_->minimumWidth());
    layout->addWidget(remaining_);
    return bar;
}

QString PreviewMediaView::stateName(State state) {
    switch (state) {
        case State::Loading:
            return QStringLiteral("loading");
        case State::Ready:
            return QStringLiteral("ready");
        case State::Playing:
            return QStringLiteral("playing");
        case State::Paused:
            return QStringLiteral("paused");
        case State::Ended:
            return QStringLiteral("ended");
        case State::Failed:
            break;
    }
    return QStringLiteral("failed");
}

PreviewMediaView::State PreviewMediaView::stateFor(QMediaPlayer::PlaybackState playback,
                                                   QMediaPlayer::MediaStatus media,
                                                   QMediaPlayer::Error error) {
    if (error != QMediaPlayer::NoError || media == QMediaPlayer::InvalidMedia) {
        return State::Failed;
    }
    if (playback == QMediaPlayer::PlayingState) {
        return State::Playing;
    }
    if (playback == QMediaPlayer::PausedState) {
        return State::Paused;
    }
    switch (media) {
        case QMediaPlayer::EndOfMedia:
            return State::Ended;
        case QMediaPlayer::LoadedMedia:
        case QMediaPlayer::BufferedMedia:
        case QMediaPlayer::BufferingMedia:
        case QMediaPlayer::StalledMedia:
            return State::Ready;
        case QMediaPlayer::NoMedia:
        case QMediaPlayer::LoadingMedia:
        case QMediaPlayer::InvalidMedia:
            break;
    }
    return State::Loading;
}

void PreviewMediaView::updateState() {
    const State state =
        stateFor(player_->playbackState(), player_->mediaStatus(), player_->error());
    if (state == State::Failed) {
        if (state_ != State::Failed) {
            state_ = state;
            showFailure(player_->errorString().isEmpty()
                            ? Strings::localized("The file can’t be played.")
                            : player_->errorString());
            emit stateChanged(state_);
        }
        return;
    }
    const bool playing = state == State::Playing;
    playButton_->setEnabled(state != State::Loading);
    slider_->setEnabled(state != State::Loading && player_->isSeekable());
    playButton_->setIcon(
        style()->standardIcon(playing ? QStyle::SP_MediaPause : QStyle::SP_MediaPlay));
    playButton_->setAccessibleName(playing ? Strings::localized("Pause")
                                           : Strings::localized("Play"));
    playButton_->setToolTip(playButton_->accessibleName());
    playButton_->setAccessibleDescription(stateName(state));
    if (state == state_) {
        return;
    }
    const State before = state_;
    state_ = state;
    if (before == State::Loading && state != State::Loading) {
        markReady();
        if (!standardControls_) {
            player_->play();
        }
    }
    emit stateChanged(state_);
}

void PreviewMediaView::updatePosition() {
    const qint64 duration = player_->duration();
    const qint64 position = player_->position();
    slider_->setRange(0, int(std::min<qint64>(duration, INT_MAX)));
    if (!sliding_) {
        slider_->setValue(int(std::min<qint64>(position, INT_MAX)));
    }
    elapsed_->setText(timeText(position));
    remaining_->setText(QStringLiteral("−") + timeText(duration - position));
    slider_->setAccessibleDescription(
        format(Strings::localized("%@ of %@"), timeText(position), timeText(duration)));
}

void PreviewMediaView::play() {
    if (state_ == State::Ended) {
        player_->setPosition(0);
    }
    player_->play();
}

void PreviewMediaView::pause() {
    player_->pause();
}

void PreviewMediaView::togglePlayback() {
    if (state_ == State::Playing) {
        pause();
    } else if (state_ != State::Loading && state_ != State::Failed) {
        play();
    }
}

void PreviewMediaView::seek(qint64 milliseconds) {
    player_->setPosition(
        std::clamp<qint64>(milliseconds, 0, std::max<qint64>(0, player_->duration())));
}

bool PreviewMediaView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == videoWidget_ && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        togglePlayback();
        return true;
    }
    return PreviewContentView::eventFilter(watched, event);
}

}  // namespace vl
