<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="en">
    <context>
        <name>AudioPanel</name>
        <message numerus="yes">
            <source>%n file(s) could not be added.</source>
            <translation>
                <numerusform>%n file could not be added.</numerusform>
                <numerusform>%n files could not be added.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>ImagePanel</name>
        <message numerus="yes">
            <source>… and %n more</source>
            <translation>
                <numerusform>… and %n more</numerusform>
                <numerusform>… and %n more</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>The image is not as it should be in %n place(s).</source>
            <translation>
                <numerusform>The image is not as it should be in %n place.</numerusform>
                <numerusform>The image is not as it should be in %n places.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s)</source>
            <translation>
                <numerusform>%n track</numerusform>
                <numerusform>%n tracks</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>JobOutcomes</name>
        <message numerus="yes">
            <source>… and %n more</source>
            <translation>
                <numerusform>… and %n more</numerusform>
                <numerusform>… and %n more</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n file</numerusform>
                <numerusform>%n files</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) could not be stored as they are.</source>
            <translation>
                <numerusform>%n item could not be stored as it is.</numerusform>
                <numerusform>%n items could not be stored as they are.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n folder(s) could not be read.</source>
            <translation>
                <numerusform>%n folder could not be read.</numerusform>
                <numerusform>%n folders could not be read.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) are not on it: their files are missing.</source>
            <translation>
                <numerusform>%n item is not on it: its file is missing.</numerusform>
                <numerusform>%n items are not on it: their files are missing.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>The image differs from the files in %n place(s).</source>
            <translation>
                <numerusform>The image differs from the files in %n place.</numerusform>
                <numerusform>The image differs from the files in %n places.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>The drive had to wait for data %n time(s).</source>
            <translation>
                <numerusform>The drive had to wait for data %n time.</numerusform>
                <numerusform>The drive had to wait for data %n times.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s)</source>
            <translation>
                <numerusform>%n track</numerusform>
                <numerusform>%n tracks</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>Track %1, %2: the sound is damaged in %n place(s)</source>
            <translation>
                <numerusform>Track %1, %2: the sound is damaged in %n place</numerusform>
                <numerusform>Track %1, %2: the sound is damaged in %n places</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n damaged sector(s)</source>
            <translation>
                <numerusform>%n damaged sector</numerusform>
                <numerusform>%n damaged sectors</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n sector(s) cut</source>
            <translation>
                <numerusform>%n sector cut</numerusform>
                <numerusform>%n sectors cut</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s) were taken out.</source>
            <translation>
                <numerusform>%n track was taken out.</numerusform>
                <numerusform>%n tracks were taken out.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s) were taken out, with damage.</source>
            <translation>
                <numerusform>%n track was taken out, with damage.</numerusform>
                <numerusform>%n tracks were taken out, with damage.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) that it had are kept.</source>
            <translation>
                <numerusform>%n file that it had is kept.</numerusform>
                <numerusform>%n files that it had are kept.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) that it had were replaced.</source>
            <translation>
                <numerusform>%n file that it had was replaced.</numerusform>
                <numerusform>%n files that it had were replaced.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) could not be.</source>
            <translation>
                <numerusform>%n item could not be.</numerusform>
                <numerusform>%n items could not be.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) have another name.</source>
            <translation>
                <numerusform>%n item has another name.</numerusform>
                <numerusform>%n items have another name.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) do not have their dates.</source>
            <translation>
                <numerusform>%n item does not have its date.</numerusform>
                <numerusform>%n items do not have their dates.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) were converted.</source>
            <translation>
                <numerusform>%n file was converted.</numerusform>
                <numerusform>%n files were converted.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) could not be.</source>
            <translation>
                <numerusform>%n file could not be.</numerusform>
                <numerusform>%n files could not be.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) are broken in places.</source>
            <translation>
                <numerusform>%n file is broken in places.</numerusform>
                <numerusform>%n files are broken in places.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>ShareSaving</name>
        <message numerus="yes">
            <source>%n item(s) are on no disc: their files are missing.</source>
            <translation>
                <numerusform>%n item is on no disc: its file is missing.</numerusform>
                <numerusform>%n items are on no disc: their files are missing.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioConvertDialog</name>
        <message numerus="yes">
            <source>%n file(s) are converted; the originals stay as they are.</source>
            <translation>
                <numerusform>%n file is converted; the original stays as it is.</numerusform>
                <numerusform>%n files are converted; the originals stay as they are.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioIntake</name>
        <message numerus="yes">
            <source>%n channels</source>
            <translation>
                <numerusform>%n channel</numerusform>
                <numerusform>%n channels</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioTrackModel</name>
        <message numerus="yes">
            <source>Add %n Track(s)</source>
            <translation>
                <numerusform>Add %n Track</numerusform>
                <numerusform>Add %n Tracks</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>Remove %n Track(s)</source>
            <translation>
                <numerusform>Remove %n Track</numerusform>
                <numerusform>Remove %n Tracks</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>Move %n Track(s)</source>
            <translation>
                <numerusform>Move %n Track</numerusform>
                <numerusform>Move %n Tracks</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::BurnDialog</name>
        <message numerus="yes">
            <source>%n of its files will be replaced: %1</source>
            <translation>
                <numerusform>%n of its files will be replaced: %1</numerusform>
                <numerusform>%n of its files will be replaced: %1</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source> and %n more</source>
            <translation>
                <numerusform> and %n more</numerusform>
                <numerusform> and %n more</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) on it stay as they are; %1 are added.</source>
            <translation>
                <numerusform>%n file on it stays as it is; %1 are added.</numerusform>
                <numerusform>%n files on it stay as they are; %1 are added.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DataView</name>
        <message numerus="yes">
            <source>%n item(s) found</source>
            <translation>
                <numerusform>%n item found</numerusform>
                <numerusform>%n items found</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n message(s).</source>
            <translation>
                <numerusform>%n message.</numerusform>
                <numerusform>%n messages.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s)</source>
            <translation>
                <numerusform>%n item</numerusform>
                <numerusform>%n items</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) cannot be stored as they are…</source>
            <translation>
                <numerusform>%n item cannot be stored as it is…</numerusform>
                <numerusform>%n items cannot be stored as they are…</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n name(s) or detail(s) change…</source>
            <translation>
                <numerusform>%n name or detail changes…</numerusform>
                <numerusform>%n names or details change…</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DiscDocument</name>
        <message numerus="yes">
            <source>Add %n Item(s)</source>
            <translation>
                <numerusform>Add %n Item</numerusform>
                <numerusform>Add %n Items</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>Remove %n Item(s)</source>
            <translation>
                <numerusform>Remove %n Item</numerusform>
                <numerusform>Remove %n Items</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>Move %n Item(s)</source>
            <translation>
                <numerusform>Move %n Item</numerusform>
                <numerusform>Move %n Items</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ImageContentsModel</name>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n file</numerusform>
                <numerusform>%n files</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ProjectActions</name>
        <message numerus="yes">
            <source>%n file(s) of this project are missing: they were moved or removed.</source>
            <translation>
                <numerusform>%n file of this project is missing: it was moved or removed.</numerusform>
                <numerusform>%n files of this project are missing: they were moved or removed.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ShareBurning</name>
        <message numerus="yes">
            <source>%1 of %n disc(s) were written.</source>
            <translation>
                <numerusform>%1 of %n disc was written.</numerusform>
                <numerusform>%1 of %n discs were written.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ShareProjects</name>
        <message numerus="yes">
            <source>%n project(s) were saved.</source>
            <translation>
                <numerusform>%n project was saved.</numerusform>
                <numerusform>%n projects were saved.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ShareSaving</name>
        <message numerus="yes">
            <source>%n image(s) were saved.</source>
            <translation>
                <numerusform>%n image was saved.</numerusform>
                <numerusform>%n images were saved.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%1 of %n image(s) were saved.</source>
            <translation>
                <numerusform>%1 of %n image was saved.</numerusform>
                <numerusform>%1 of %n images were saved.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::SplitDialog</name>
        <message numerus="yes">
            <source>%n disc(s) of %1 are needed.</source>
            <translation>
                <numerusform>%n disc of %1 is needed.</numerusform>
                <numerusform>%n discs of %1 are needed.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) are larger than such a disc, and on none.</source>
            <translation>
                <numerusform>%n file is larger than such a disc, and on none.</numerusform>
                <numerusform>%n files are larger than such a disc, and on none.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n file</numerusform>
                <numerusform>%n files</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>… and %n more</source>
            <translation>
                <numerusform>… and %n more</numerusform>
                <numerusform>… and %n more</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::VideoView</name>
        <message numerus="yes">
            <source>%n angle(s)</source>
            <translation>
                <numerusform>%n angle</numerusform>
                <numerusform>%n angles</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n channel(s)</source>
            <translation>
                <numerusform>%n channel</numerusform>
                <numerusform>%n channels</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n thing(s) are not as players need them.</source>
            <translation>
                <numerusform>%n thing is not as players need it.</numerusform>
                <numerusform>%n things are not as players need them.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>VideoPanel</name>
        <message numerus="yes">
            <source>%n title(s)</source>
            <translation>
                <numerusform>%n title</numerusform>
                <numerusform>%n titles</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Words</name>
        <message numerus="yes">
            <source>%n bytes</source>
            <translation>
                <numerusform>%n byte</numerusform>
                <numerusform>%n bytes</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n file</numerusform>
                <numerusform>%n files</numerusform>
            </translation>
        </message>
    </context>
</TS>
