#pragma once

#include <QString>
#include <QVector>

/// Every process-wide value: the way the windows talk to each other. Tests reset it by `globals = {}`.
struct Globals
{
    QString DataVersion; ///< "3.0": version of the data that the program reads and writes
    float MediaPlayerVersion = 0; ///< 9.0 once the player was found; every use of the player tests it
    bool StartInEditor = false; ///< the command line asked for the editor
    bool StartInFolderBrowser = false; ///< the command line asked for the Browse Folder Viewer
    bool MainViewerActivated = false; ///< the Main Viewer has been activated at least once
    bool ProgramExiting = false; ///< shutdown has begun; events that would start anything new test it
    bool StandardListLocked = false; ///< the DisplayList came from somewhere else: the standard list stays as it is
    bool ItemSelectionBusy = false; ///< bulk work on the lists: clicks display nothing
    bool SavingStandardList = false; ///< SaveAllSettings is at work

    int CurrentListIndex = 0; ///< 1-based position of the current item; 0 when the list is empty
    int ListFileCount = 0; ///< the count of the list file read last
    QString CurrentMediaFile; ///< path of the item shown
    int ImageWidth = 0; ///< pixels, after scaling by the zoom
    int ImageHeight = 0;
    int OriginalImageWidth = 0; ///< pixels of the file
    int OriginalImageHeight = 0;
    float ImageColorDepth = 0; ///< bits per pixel as the decoder gives them

    QString PictureFilePattern; ///< "*.ART;*.BMP", see BuildFilePatterns
    QString MotionFilePattern;
    QString PolyFilePattern;

    QString ChosenFolder; ///< result of the folder dialog; empty after Cancel
    bool cancelFlag = false; ///< the progress window was told to cancel; only batch conversion reads and clears it
    bool SearchActive = false; ///< a folder search runs; clearing it stops the search
    int FoldersSearched = 0;

    int SlideShowInterval = 5; ///< seconds between items of a show
    bool AutoPlayMotion = false; ///< a show runs; a "Motion" item starts playing when it is loaded
    bool AutoPlayOnce = false; ///< AutoPlayMotion holds for one item only
    bool ShowStopRequested = false; ///< the next click on the show's item turns it off
    QVector<bool> ShuffleHistory; ///< positions already shown; index 0 is unused
    int ShuffleCount = 0;

    int ViewMode = 0; ///< stored, restored, set to 1 at each activation of the Main Viewer
    int ColorMNU = 0; ///< colour menu value
};

inline Globals globals;
