<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr_FR" sourcelanguage="en">
    <context>
        <name>AudioPanel</name>
        <message>
            <source>Audio</source>
            <translation>Audio</translation>
        </message>
        <message>
            <source>Sound for every CD player</source>
            <translation>Du son pour tout lecteur de CD</translation>
        </message>
        <message>
            <source>There is no track yet. Drop sound files into the window first.</source>
            <translation>Il n’y a pas encore de piste. Déposez d’abord des fichiers audio dans la fenêtre.</translation>
        </message>
        <message>
            <source>Audio CD</source>
            <translation>CD audio</translation>
        </message>
        <message>
            <source>Adding</source>
            <translation>Ajout</translation>
        </message>
        <message>
            <source>%1 is left out: a CD has 99 tracks at most.</source>
            <translation>%1 est omis : un CD a 99 pistes au plus.</translation>
        </message>
        <message>
            <source>No sound files were found.</source>
            <translation>Aucun fichier audio n’a été trouvé.</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) could not be added.</source>
            <translation>
                <numerusform>%n fichier n’a pu être ajouté.</numerusform>
                <numerusform>%n fichiers n’ont pu être ajoutés.</numerusform>
            </translation>
        </message>
        <message>
            <source>Not all that the cue sheet says was taken.</source>
            <translation>Tout ce que dit la feuille CUE n&apos;a pas été repris.</translation>
        </message>
        <message>
            <source>%1 has a pause of %2 s in front of track 1, which is left out: every disc begins with two seconds of silence.</source>
            <translation>%1 contient avant la piste 1 une pause de %2 s, qui est omise : tout disque commence par deux secondes de silence.</translation>
        </message>
    </context>
    <context>
        <name>DataPanel</name>
        <message>
            <source>Data</source>
            <translation>Données</translation>
        </message>
        <message>
            <source>Files and folders</source>
            <translation>Fichiers et dossiers</translation>
        </message>
        <message>
            <source>The disc is empty. Drop files and folders into the window first.</source>
            <translation>Le disque est vide. Déposez d’abord des fichiers et des dossiers dans la fenêtre.</translation>
        </message>
        <message>
            <source>Save Images Into a New Folder</source>
            <translation>Enregistrer les images dans un nouveau dossier</translation>
        </message>
        <message>
            <source>New folder:</source>
            <translation>Nouveau dossier :</translation>
        </message>
        <message>
            <source>Save Projects Into a New Folder</source>
            <translation>Enregistrer les projets dans un nouveau dossier</translation>
        </message>
    </context>
    <context>
        <name>DiscRowLook</name>
        <message>
            <source>File</source>
            <translation>Fichier</translation>
        </message>
        <message>
            <source>Folder</source>
            <translation>Dossier</translation>
        </message>
        <message>
            <source>New folder</source>
            <translation>Nouveau dossier</translation>
        </message>
        <message>
            <source>Link</source>
            <translation>Lien</translation>
        </message>
        <message>
            <source>Device or pipe</source>
            <translation>Périphérique ou tube</translation>
        </message>
        <message>
            <source>The file is missing: it was moved or removed.</source>
            <translation>Le fichier manque : il a été déplacé ou supprimé.</translation>
        </message>
        <message>
            <source>You may not read this file.</source>
            <translation>Vous n’avez pas le droit de lire ce fichier.</translation>
        </message>
    </context>
    <context>
        <name>DiscWords</name>
        <message>
            <source>A file in the place of a disc, room for %1</source>
            <translation>Un fichier à la place d’un disque, place pour %1</translation>
        </message>
        <message>
            <source>%1, room for %2. What is on it will be replaced.</source>
            <translation>%1, place pour %2. Son contenu sera remplacé.</translation>
        </message>
        <message>
            <source>%1, blank, %2 free</source>
            <translation>%1, vierge, %2 libres</translation>
        </message>
        <message>
            <source>Disc</source>
            <translation>Disque</translation>
        </message>
        <message>
            <source>There is no disc in the drive.</source>
            <translation>Il n’y a pas de disque dans le lecteur.</translation>
        </message>
        <message>
            <source>%1, written in part, %2 free</source>
            <translation>%1, écrit en partie, %2 libres</translation>
        </message>
        <message>
            <source>%1, full. It can be erased.</source>
            <translation>%1, plein. Il peut être effacé.</translation>
        </message>
        <message>
            <source>%1: nothing can be added to it.</source>
            <translation>%1 : rien ne peut y être ajouté.</translation>
        </message>
        <message>
            <source>%1: this drive can neither read nor write it.</source>
            <translation>%1 : ce lecteur ne peut ni le lire ni l’écrire.</translation>
        </message>
        <message>
            <source>The drive does not say what is in it.</source>
            <translation>Le lecteur n’indique pas ce qu’il contient.</translation>
        </message>
        <message>
            <source>%1/s</source>
            <translation>%1/s</translation>
        </message>
        <message>
            <source>The disc has to be erased before it can be written again.</source>
            <translation>Le disque devra être effacé avant d’être écrit de nouveau.</translation>
        </message>
        <message>
            <source>What is on the disc then is worth nothing, but it can be written again.</source>
            <translation>Son contenu sera inutilisable, mais le disque pourra être écrit de nouveau.</translation>
        </message>
        <message>
            <source>The disc cannot be used any more then.</source>
            <translation>Le disque sera alors inutilisable.</translation>
        </message>
        <message>
            <source>%1, room for %2 in all</source>
            <translation>%1, place pour %2 en tout</translation>
        </message>
    </context>
    <context>
        <name>ImagePanel</name>
        <message>
            <source>Image</source>
            <translation>Image</translation>
        </message>
        <message numerus="yes">
            <source>… and %n more</source>
            <translation>
                <numerusform>… et %n de plus</numerusform>
                <numerusform>… et %n de plus</numerusform>
            </translation>
        </message>
        <message>
            <source>Images of discs that are there already</source>
            <translation>Images de disques qui existent déjà</translation>
        </message>
        <message>
            <source>No image is open. Open one first.</source>
            <translation>Aucune image n’est ouverte. Ouvrez-en une d’abord.</translation>
        </message>
        <message>
            <source>Looking at %1</source>
            <translation>Examen de %1</translation>
        </message>
        <message>
            <source>%1: no filesystem was found in it.</source>
            <translation>%1 : aucun système de fichiers n’y a été trouvé.</translation>
        </message>
        <message numerus="yes">
            <source>The image is not as it should be in %n place(s).</source>
            <translation>
                <numerusform>L’image n’est pas telle qu’elle devrait être à %n endroit.</numerusform>
                <numerusform>L’image n’est pas telle qu’elle devrait être à %n endroits.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s)</source>
            <translation>
                <numerusform>%n piste</numerusform>
                <numerusform>%n pistes</numerusform>
            </translation>
        </message>
        <message>
            <source>The description of the image was read with reservations.</source>
            <translation>La description de l’image a été lue avec des réserves.</translation>
        </message>
        <message>
            <source>Open Image</source>
            <translation>Ouvrir une image</translation>
        </message>
        <message>
            <source>Disc images (*.iso *.bin *.img *.vant *.udf *.cdr *.cue *.ccd *.toc)</source>
            <translation>Images disque (*.iso *.bin *.img *.vant *.udf *.cdr *.cue *.ccd *.toc)</translation>
        </message>
        <message>
            <source>All files (*)</source>
            <translation>Tous les fichiers (*)</translation>
        </message>
        <message>
            <source>Compare with a Folder</source>
            <translation>Comparer avec un dossier</translation>
        </message>
        <message>
            <source>Take All Tracks Out Into a Folder</source>
            <translation>Extraire toutes les pistes dans un dossier</translation>
        </message>
        <message>
            <source>Take Track %1 Out</source>
            <translation>Extraire la piste %1</translation>
        </message>
        <message>
            <source>New folder:</source>
            <translation>Nouveau dossier :</translation>
        </message>
        <message>
            <source>%1 tracks</source>
            <translation>%1, pistes</translation>
        </message>
        <message>
            <source>%1, track %2</source>
            <translation>%1, piste %2</translation>
        </message>
        <message>
            <source>Choose files of one filesystem only.</source>
            <translation>Choisissez des fichiers d’un seul système de fichiers.</translation>
        </message>
        <message>
            <source>Take Files Out Into a Folder</source>
            <translation>Extraire les fichiers dans un dossier</translation>
        </message>
        <message>
            <source>Choose files or folders of a filesystem first.</source>
            <translation>Choisissez d’abord des fichiers ou dossiers d’un système de fichiers.</translation>
        </message>
        <message>
            <source>Paste it in the file manager.</source>
            <translation>Collez-le dans le gestionnaire de fichiers.</translation>
        </message>
        <message>
            <source>Drag it once more to drop it.</source>
            <translation>Faites-le glisser encore une fois pour le déposer.</translation>
        </message>
        <message>
            <source>Files are being taken out already. Wait for the end of that, or stop it.</source>
            <translation>Des fichiers sont déjà en cours d’extraction. Attendez la fin, ou arrêtez.</translation>
        </message>
    </context>
    <context>
        <name>JobOutcomes</name>
        <message numerus="yes">
            <source>… and %n more</source>
            <translation>
                <numerusform>… et %n autre</numerusform>
                <numerusform>… et %n autres</numerusform>
            </translation>
        </message>
        <message>
            <source>%1: the file is missing</source>
            <translation>%1 : le fichier manque</translation>
        </message>
        <message>
            <source>The folder %1 could not be read: %2</source>
            <translation>Le dossier %1 n’a pas pu être lu : %2</translation>
        </message>
        <message>
            <source>The name of the disc could not be stored as it was asked for.</source>
            <translation>Le nom du disque n’a pas pu être enregistré tel que demandé.</translation>
        </message>
        <message>
            <source>%1 was saved: %2, %3.</source>
            <translation>%1 a été enregistré : %2, %3.</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n fichier</numerusform>
                <numerusform>%n fichiers</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) could not be stored as they are.</source>
            <translation>
                <numerusform>%n élément n’a pas pu être enregistré tel quel.</numerusform>
                <numerusform>%n éléments n’ont pas pu être enregistrés tels quels.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n folder(s) could not be read.</source>
            <translation>
                <numerusform>%n dossier n’a pas pu être lu.</numerusform>
                <numerusform>%n dossiers n’ont pas pu être lus.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) are not on it: their files are missing.</source>
            <translation>
                <numerusform>%n élément n’y est pas : son fichier manque.</numerusform>
                <numerusform>%n éléments n’y sont pas : leurs fichiers manquent.</numerusform>
            </translation>
        </message>
        <message>
            <source>Nothing is missing.</source>
            <translation>Rien ne manque.</translation>
        </message>
        <message>
            <source>Nothing is missing; some names are changed in some filesystems.</source>
            <translation>Rien ne manque ; certains noms sont modifiés dans certains systèmes de fichiers.</translation>
        </message>
        <message numerus="yes">
            <source>The image differs from the files in %n place(s).</source>
            <translation>
                <numerusform>L’image diffère des fichiers en %n endroit.</numerusform>
                <numerusform>L’image diffère des fichiers en %n endroits.</numerusform>
            </translation>
        </message>
        <message>
            <source>The image was compared with the files: all %1 are the same.</source>
            <translation>L’image a été comparée aux fichiers : les %1 sont identiques.</translation>
        </message>
        <message>
            <source>The name of the disc is another one.</source>
            <translation>Le disque porte un autre nom.</translation>
        </message>
        <message numerus="yes">
            <source>The drive had to wait for data %n time(s).</source>
            <translation>
                <numerusform>Le lecteur a dû attendre des données %n fois.</numerusform>
                <numerusform>Le lecteur a dû attendre des données %n fois.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s)</source>
            <translation>
                <numerusform>%n piste</numerusform>
                <numerusform>%n pistes</numerusform>
            </translation>
        </message>
        <message>
            <source>The writing was simulated, the disc is as it was: %1, %2, %3.</source>
            <translation>L’écriture a été simulée, le disque est inchangé : %1, %2, %3.</translation>
        </message>
        <message>
            <source>The disc was written: %1, %2, %3.</source>
            <translation>Le disque a été écrit : %1, %2, %3.</translation>
        </message>
        <message>
            <source>It was compared with what was to be written, and is the same.</source>
            <translation>Il a été comparé avec ce qui devait être écrit, et il est identique.</translation>
        </message>
        <message>
            <source>Something of the image is not on it.</source>
            <translation>Une partie de l’image n’y est pas.</translation>
        </message>
        <message numerus="yes">
            <source>Track %1, %2: the sound is damaged in %n place(s)</source>
            <translation>
                <numerusform>Piste %1, %2 : le son est endommagé à %n endroit</numerusform>
                <numerusform>Piste %1, %2 : le son est endommagé à %n endroits</numerusform>
            </translation>
        </message>
        <message>
            <source>Track %1 is shorter than four seconds, which many drives refuse</source>
            <translation>La piste %1 dure moins de quatre secondes, ce que beaucoup de lecteurs refusent</translation>
        </message>
        <message>
            <source>Some texts could not be put into the CD-TEXT.</source>
            <translation>Certains textes n’ont pu être mis dans le CD-TEXT.</translation>
        </message>
        <message>
            <source>Some of the sound is damaged.</source>
            <translation>Une partie du son est endommagée.</translation>
        </message>
        <message>
            <source>Track %1: %2, %3</source>
            <translation>Piste %1 : %2, %3</translation>
        </message>
        <message numerus="yes">
            <source>%n damaged sector(s)</source>
            <translation>
                <numerusform>%n secteur endommagé</numerusform>
                <numerusform>%n secteurs endommagés</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n sector(s) cut</source>
            <translation>
                <numerusform>%n secteur coupé</numerusform>
                <numerusform>%n secteurs coupés</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s) were taken out.</source>
            <translation>
                <numerusform>%n piste a été extraite.</numerusform>
                <numerusform>%n pistes ont été extraites.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n track(s) were taken out, with damage.</source>
            <translation>
                <numerusform>%n piste a été extraite, avec des dommages.</numerusform>
                <numerusform>%n pistes ont été extraites, avec des dommages.</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 takes the place of the file that the disc had.</source>
            <translation>%1 remplace le fichier que le disque contenait.</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) that it had are kept.</source>
            <translation>
                <numerusform>%n fichier qu’il contenait est conservé.</numerusform>
                <numerusform>%n fichiers qu’il contenait sont conservés.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) that it had were replaced.</source>
            <translation>
                <numerusform>%n fichier qu’il contenait a été remplacé.</numerusform>
                <numerusform>%n fichiers qu’il contenait ont été remplacés.</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 is %2 now</source>
            <translation>%1 s’appelle maintenant %2</translation>
        </message>
        <message>
            <source>What was taken out before stays: %1.</source>
            <translation>Ce qui a été extrait auparavant reste : %1.</translation>
        </message>
        <message>
            <source>Taken out of %1: %2.</source>
            <translation>Extrait de %1 : %2.</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) could not be.</source>
            <translation>
                <numerusform>%n élément n’a pas pu l’être.</numerusform>
                <numerusform>%n éléments n’ont pas pu l’être.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) have another name.</source>
            <translation>
                <numerusform>%n élément a un autre nom.</numerusform>
                <numerusform>%n éléments ont un autre nom.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) do not have their dates.</source>
            <translation>
                <numerusform>%n élément n’a pas sa date.</numerusform>
                <numerusform>%n éléments n’ont pas leur date.</numerusform>
            </translation>
        </message>
        <message>
            <source>Some of the sound, or of its texts, is not on it as it should be.</source>
            <translation>Une partie du son ou de ses textes n’y est pas comme il faudrait.</translation>
        </message>
        <message>
            <source>%1 is broken in places; silence stands for them</source>
            <translation>%1 est abîmé par endroits ; du silence les remplace</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) were converted.</source>
            <translation>
                <numerusform>%n fichier a été converti.</numerusform>
                <numerusform>%n fichiers ont été convertis.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) could not be.</source>
            <translation>
                <numerusform>%n fichier n’a pas pu l’être.</numerusform>
                <numerusform>%n fichiers n’ont pas pu l’être.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) are broken in places.</source>
            <translation>
                <numerusform>%n fichier est abîmé par endroits.</numerusform>
                <numerusform>%n fichiers sont abîmés par endroits.</numerusform>
            </translation>
        </message>
        <message>
            <source>Computers cannot be started from it any more.</source>
            <translation>Les ordinateurs ne peuvent plus démarrer à partir de ce disque.</translation>
        </message>
    </context>
    <context>
        <name>Media</name>
        <message>
            <source>Any size</source>
            <translation>Toute taille</translation>
        </message>
        <message>
            <source>CD, 74 minutes</source>
            <translation>CD, 74 minutes</translation>
        </message>
        <message>
            <source>CD, 80 minutes</source>
            <translation>CD, 80 minutes</translation>
        </message>
        <message>
            <source>DVD</source>
            <translation>DVD</translation>
        </message>
        <message>
            <source>DVD, two layers</source>
            <translation>DVD, deux couches</translation>
        </message>
        <message>
            <source>Blu-ray</source>
            <translation>Blu-ray</translation>
        </message>
        <message>
            <source>Blu-ray, two layers</source>
            <translation>Blu-ray, deux couches</translation>
        </message>
    </context>
    <context>
        <name>Project</name>
        <message>
            <source>%1 cannot be opened: %2</source>
            <translation>%1 ne peut pas être ouvert : %2</translation>
        </message>
        <message>
            <source>it is too long for a project</source>
            <translation>il est trop grand pour un projet</translation>
        </message>
        <message>
            <source>it is not a project</source>
            <translation>ce n’est pas un projet</translation>
        </message>
        <message>
            <source>it was saved by a newer version of this program</source>
            <translation>il a été enregistré par une version plus récente de ce programme</translation>
        </message>
        <message>
            <source>it names an item that cannot be on a disc</source>
            <translation>il nomme un élément qui ne peut pas être sur un disque</translation>
        </message>
        <message>
            <source>it has more than 99 tracks</source>
            <translation>il a plus de 99 pistes</translation>
        </message>
        <message>
            <source>it has a track without a file</source>
            <translation>il a une piste sans fichier</translation>
        </message>
        <message>
            <source>it is not a project, or it is damaged</source>
            <translation>ce n’est pas un projet, ou il est endommagé</translation>
        </message>
    </context>
    <context>
        <name>ShareSaving</name>
        <message>
            <source>There is something of this name already. Name a new folder.</source>
            <translation>Il existe déjà quelque chose de ce nom. Indiquez un nouveau dossier.</translation>
        </message>
        <message>
            <source>The folder cannot be made: %1</source>
            <translation>Le dossier ne peut pas être créé : %1</translation>
        </message>
        <message>
            <source>disc</source>
            <translation>disque</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) are on no disc: their files are missing.</source>
            <translation>
                <numerusform>%n élément n’est sur aucun disque : son fichier manque.</numerusform>
                <numerusform>%n éléments ne sont sur aucun disque : leurs fichiers manquent.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioConversion</name>
        <message>
            <source>%1: the file is missing</source>
            <translation>%1 : le fichier manque</translation>
        </message>
        <message>
            <source>%1 is converted as a whole, not track by track</source>
            <translation>%1 est converti en entier, et non piste par piste</translation>
        </message>
        <message>
            <source>There is no file to convert.</source>
            <translation>Il n’y a aucun fichier à convertir.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioConvertDialog</name>
        <message>
            <source>&amp;Titles and covers, too</source>
            <translation>&amp;Titres et pochettes aussi</translation>
        </message>
        <message>
            <source>Convert Sound Files</source>
            <translation>Convertir des fichiers audio</translation>
        </message>
        <message>
            <source>WAVE (not compressed)</source>
            <translation>WAVE (non compressé)</translation>
        </message>
        <message>
            <source>AIFF (not compressed)</source>
            <translation>AIFF (non compressé)</translation>
        </message>
        <message>
            <source>MP3, about 128 kbit/s</source>
            <translation>MP3, environ 128 kbit/s</translation>
        </message>
        <message>
            <source>MP3, about 160 kbit/s</source>
            <translation>MP3, environ 160 kbit/s</translation>
        </message>
        <message>
            <source>MP3, 128 kbit/s throughout</source>
            <translation>MP3, 128 kbit/s constants</translation>
        </message>
        <message>
            <source>MP3, 160 kbit/s throughout</source>
            <translation>MP3, 160 kbit/s constants</translation>
        </message>
        <message>
            <source>MP3 files can be made when the program lame is installed.</source>
            <translation>Des fichiers MP3 peuvent être faits quand le programme lame est installé.</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) are converted; the originals stay as they are.</source>
            <translation>
                <numerusform>%n fichier est converti ; l’original reste tel quel.</numerusform>
                <numerusform>%n fichiers sont convertis ; les originaux restent tels quels.</numerusform>
            </translation>
        </message>
        <message>
            <source>&amp;Format:</source>
            <translation>&amp;Format :</translation>
        </message>
        <message>
            <source>C&amp;hoose…</source>
            <translation>C&amp;hoisir…</translation>
        </message>
        <message>
            <source>&amp;Into the folder:</source>
            <translation>&amp;Dans le dossier :</translation>
        </message>
        <message>
            <source>Into the folder</source>
            <translation>Dans le dossier</translation>
        </message>
        <message>
            <source>&amp;Convert</source>
            <translation>&amp;Convertir</translation>
        </message>
        <message>
            <source>Choose a Folder</source>
            <translation>Choisir un dossier</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioIntake</name>
        <message>
            <source>%1 kHz</source>
            <translation>%1 kHz</translation>
        </message>
        <message>
            <source>mono</source>
            <translation>mono</translation>
        </message>
        <message>
            <source>stereo</source>
            <translation>stéréo</translation>
        </message>
        <message numerus="yes">
            <source>%n channels</source>
            <translation>
                <numerusform>%n canal</numerusform>
                <numerusform>%n canaux</numerusform>
            </translation>
        </message>
        <message>
            <source>The folder %1 cannot be listed: %2</source>
            <translation>Le dossier %1 ne peut pas être lu : %2</translation>
        </message>
        <message>
            <source>%1 holds no sound.</source>
            <translation>%1 ne contient pas de son.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioTextDialog</name>
        <message>
            <source>CD-TEXT</source>
            <translation>CD-TEXT</translation>
        </message>
        <message>
            <source>&amp;Texts for players that show them:</source>
            <translation>&amp;Textes pour les lecteurs qui les affichent :</translation>
        </message>
        <message>
            <source>Catalogue &amp;number (EAN, 13 digits):</source>
            <translation>&amp;Numéro de catalogue (EAN, 13 chiffres) :</translation>
        </message>
        <message>
            <source>Title</source>
            <translation>Titre</translation>
        </message>
        <message>
            <source>Performer</source>
            <translation>Interprète</translation>
        </message>
        <message>
            <source>Songwriter</source>
            <translation>Parolier</translation>
        </message>
        <message>
            <source>Composer</source>
            <translation>Compositeur</translation>
        </message>
        <message>
            <source>Arranger</source>
            <translation>Arrangeur</translation>
        </message>
        <message>
            <source>Message</source>
            <translation>Message</translation>
        </message>
        <message>
            <source>ISRC</source>
            <translation>ISRC</translation>
        </message>
        <message>
            <source>Disc</source>
            <translation>Disque</translation>
        </message>
        <message>
            <source>Track %1</source>
            <translation>Piste %1</translation>
        </message>
        <message>
            <source>%1 is not an ISRC: that has two letters, three letters or digits, and seven digits.</source>
            <translation>%1 n&apos;est pas un ISRC : deux lettres, trois lettres ou chiffres, puis sept chiffres.</translation>
        </message>
        <message>
            <source>A catalogue number has 13 digits.</source>
            <translation>Un numéro de catalogue a 13 chiffres.</translation>
        </message>
        <message>
            <source>&amp;Add Language</source>
            <translation>&amp;Ajouter une langue</translation>
        </message>
        <message>
            <source>&amp;Remove Language</source>
            <translation>&amp;Supprimer la langue</translation>
        </message>
        <message>
            <source>&amp;Language:</source>
            <translation>&amp;Langue :</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioTrackModel</name>
        <message numerus="yes">
            <source>Add %n Track(s)</source>
            <translation>
                <numerusform>Ajouter %n piste</numerusform>
                <numerusform>Ajouter %n pistes</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>Remove %n Track(s)</source>
            <translation>
                <numerusform>Retirer %n piste</numerusform>
                <numerusform>Retirer %n pistes</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>Move %n Track(s)</source>
            <translation>
                <numerusform>Déplacer %n piste</numerusform>
                <numerusform>Déplacer %n pistes</numerusform>
            </translation>
        </message>
        <message>
            <source>Change Texts</source>
            <translation>Modifier les textes</translation>
        </message>
        <message>
            <source>No.</source>
            <translation>N°</translation>
        </message>
        <message>
            <source>Title</source>
            <translation>Titre</translation>
        </message>
        <message>
            <source>Performer</source>
            <translation>Interprète</translation>
        </message>
        <message>
            <source>Length</source>
            <translation>Durée</translation>
        </message>
        <message>
            <source>File</source>
            <translation>Fichier</translation>
        </message>
        <message>
            <source>Change Pauses</source>
            <translation>Modifier les pauses</translation>
        </message>
        <message>
            <source>%1 s</source>
            <translation>%1 s</translation>
        </message>
        <message>
            <source>The file is missing: it was moved or removed.</source>
            <translation>Le fichier manque : il a été déplacé ou supprimé.</translation>
        </message>
        <message>
            <source>ISRC %1</source>
            <translation>ISRC %1</translation>
        </message>
        <message>
            <source>Sound in the pause in front of it</source>
            <translation>Du son dans la pause qui précède</translation>
        </message>
        <message>
            <source>Change Pause</source>
            <translation>Modifier la pause</translation>
        </message>
        <message>
            <source>Pause</source>
            <translation>Pause</translation>
        </message>
        <message>
            <source>Sound</source>
            <translation>Son</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::AudioView</name>
        <message>
            <source>&amp;Without a break where there is no pause</source>
            <translation>&amp;Sans coupure là où il n’y a pas de pause</translation>
        </message>
        <message>
            <source>Common &amp;loudness</source>
            <translation>&amp;Niveau sonore commun</translation>
        </message>
        <message>
            <source>CD-&amp;TEXT</source>
            <translation>CD-TE&amp;XT</translation>
        </message>
        <message>
            <source>Add &amp;Tracks…</source>
            <translation>Ajouter des &amp;pistes…</translation>
        </message>
        <message>
            <source>Move &amp;Up</source>
            <translation>&amp;Monter</translation>
        </message>
        <message>
            <source>Move &amp;Down</source>
            <translation>&amp;Descendre</translation>
        </message>
        <message>
            <source>&amp;Remove Tracks</source>
            <translation>&amp;Retirer des pistes</translation>
        </message>
        <message>
            <source>&amp;Pause between tracks:</source>
            <translation>&amp;Pause entre les pistes :</translation>
        </message>
        <message>
            <source> s</source>
            <translation> s</translation>
        </message>
        <message>
            <source>Titles and performers for players that show them</source>
            <translation>Titres et interprètes pour les lecteurs qui les affichent</translation>
        </message>
        <message>
            <source>Brings the whole disc to the loudness that is usual, in the same measure for all tracks</source>
            <translation>Amène tout le disque au niveau sonore usuel, dans la même mesure pour toutes les pistes</translation>
        </message>
        <message>
            <source>T&amp;itle of the disc:</source>
            <translation>T&amp;itre du disque :</translation>
        </message>
        <message>
            <source>P&amp;erformer:</source>
            <translation>I&amp;nterprète :</translation>
        </message>
        <message>
            <source>Tracks</source>
            <translation>Pistes</translation>
        </message>
        <message>
            <source>Drop sound files here. They are played in this order.</source>
            <translation>Déposez des fichiers audio ici. Ils sont joués dans cet ordre.</translation>
        </message>
        <message>
            <source>How full the disc is</source>
            <translation>Remplissage du disque</translation>
        </message>
        <message>
            <source>Length of the disc</source>
            <translation>Durée du disque</translation>
        </message>
        <message>
            <source>Kind of disc</source>
            <translation>Type de disque</translation>
        </message>
        <message>
            <source>CD, %1 minutes</source>
            <translation>CD, %1 minutes</translation>
        </message>
        <message>
            <source>%1: %2 too long</source>
            <translation>%1 : %2 de trop</translation>
        </message>
        <message>
            <source>%1, %2 free</source>
            <translation>%1, %2 libres</translation>
        </message>
        <message>
            <source>Add Tracks</source>
            <translation>Ajouter des pistes</translation>
        </message>
        <message>
            <source>&amp;CD-TEXT…</source>
            <translation>CD-TE&amp;XT…</translation>
        </message>
        <message>
            <source>Change Texts</source>
            <translation>Modifier les textes</translation>
        </message>
        <message>
            <source>Change Options</source>
            <translation>Modifier les options</translation>
        </message>
        <message>
            <source>Change the Kind of Disc</source>
            <translation>Modifier le type de disque</translation>
        </message>
        <message>
            <source>There is no sound device, so nothing can be heard. The disc can be made all the same.</source>
            <translation>Il n&apos;y a pas de périphérique audio, donc rien à entendre. Le disque peut être fait tout de même.</translation>
        </message>
        <message>
            <source>Con&amp;vert…</source>
            <translation>Con&amp;vertir…</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::BurnDialog</name>
        <message>
            <source>&amp;Look Again</source>
            <translation>&amp;Regarder de nouveau</translation>
        </message>
        <message>
            <source>&amp;Compare the disc with the files afterwards</source>
            <translation>&amp;Comparer ensuite le disque avec les fichiers</translation>
        </message>
        <message>
            <source>Only &amp;simulate: the laser stays off</source>
            <translation>&amp;Simuler seulement : le laser reste éteint</translation>
        </message>
        <message>
            <source>&amp;Eject the disc at the end</source>
            <translation>&amp;Éjecter le disque à la fin</translation>
        </message>
        <message>
            <source>Burn a Disc</source>
            <translation>Graver un disque</translation>
        </message>
        <message>
            <source>&amp;Drive:</source>
            <translation>&amp;Lecteur :</translation>
        </message>
        <message>
            <source>The disc in the drive</source>
            <translation>Le disque dans le lecteur</translation>
        </message>
        <message>
            <source>Disc:</source>
            <translation>Disque :</translation>
        </message>
        <message>
            <source>S&amp;peed:</source>
            <translation>&amp;Vitesse :</translation>
        </message>
        <message>
            <source>&amp;Burn</source>
            <translation>&amp;Graver</translation>
        </message>
        <message>
            <source>E&amp;rase…</source>
            <translation>E&amp;ffacer…</translation>
        </message>
        <message>
            <source>As fast as it goes</source>
            <translation>Aussi vite que possible</translation>
        </message>
        <message>
            <source>Erase it first, or put in another disc.</source>
            <translation>Effacez-le d’abord, ou insérez un autre disque.</translation>
        </message>
        <message>
            <source>Put in another disc.</source>
            <translation>Insérez un autre disque.</translation>
        </message>
        <message>
            <source>It is too small: about %1 are to be written.</source>
            <translation>Il est trop petit : environ %1 sont à écrire.</translation>
        </message>
        <message>
            <source>The disc is being erased. That cannot be stopped.</source>
            <translation>Le disque est en cours d’effacement, ce qui ne peut être arrêté.</translation>
        </message>
        <message>
            <source>Looking for drives…</source>
            <translation>Recherche de lecteurs…</translation>
        </message>
        <message>
            <source>Looking at the disc…</source>
            <translation>Examen du disque…</translation>
        </message>
        <message>
            <source>This computer has no optical drive. Connect one, and look again.</source>
            <translation>Cet ordinateur n’a pas de lecteur optique. Connectez-en un, puis regardez de nouveau.</translation>
        </message>
        <message>
            <source>Erase the Disc</source>
            <translation>Effacer le disque</translation>
        </message>
        <message>
            <source>Everything on the disc will be lost.</source>
            <translation>Tout le contenu du disque sera perdu.</translation>
        </message>
        <message>
            <source>Erasing takes a minute or two and cannot be stopped.</source>
            <translation>L’effacement dure une minute ou deux et ne peut être arrêté.</translation>
        </message>
        <message>
            <source>&amp;Erase</source>
            <translation>&amp;Effacer</translation>
        </message>
        <message>
            <source>Erasing</source>
            <translation>Effacement</translation>
        </message>
        <message numerus="yes">
            <source>%n of its files will be replaced: %1</source>
            <translation>
                <numerusform>%n de ses fichiers sera remplacé : %1</numerusform>
                <numerusform>%n de ses fichiers seront remplacés : %1</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source> and %n more</source>
            <translation>
                <numerusform> et %n autre</numerusform>
                <numerusform> et %n autres</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) on it stay as they are; %1 are added.</source>
            <translation>
                <numerusform>%n fichier du disque reste tel quel ; %1 sont ajoutés.</numerusform>
                <numerusform>%n fichiers du disque restent tels quels ; %1 sont ajoutés.</numerusform>
            </translation>
        </message>
        <message>
            <source>What is on it stays as it is; %1 are added.</source>
            <translation>Son contenu reste tel quel ; %1 sont ajoutés.</translation>
        </message>
        <message>
            <source>Computers can be started from it now, and not any more afterwards.</source>
            <translation>Des ordinateurs peuvent démarrer à partir de ce disque, mais ne le pourront plus ensuite.</translation>
        </message>
        <message>
            <source>&amp;Keep the disc open, so that more can be added to it</source>
            <translation>&amp;Garder le disque ouvert pour y ajouter plus tard</translation>
        </message>
        <message>
            <source>Looking at what is on it…</source>
            <translation>Lecture de son contenu…</translation>
        </message>
        <message>
            <source>&amp;Keep what is on the disc, and add to it</source>
            <translation>&amp;Garder le contenu du disque et y ajouter</translation>
        </message>
        <message>
            <source>Sound takes a CD-R or CD-RW. Put one in.</source>
            <translation>Le son demande un CD-R ou un CD-RW. Insérez-en un.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::CapacityBar</name>
        <message>
            <source>Kind of disc</source>
            <translation>Type de disque</translation>
        </message>
        <message>
            <source>What has to fit onto it</source>
            <translation>Ce qui doit y tenir</translation>
        </message>
        <message>
            <source>Size of the disc</source>
            <translation>Taille du disque</translation>
        </message>
        <message>
            <source>about %1</source>
            <translation>environ %1</translation>
        </message>
        <message>
            <source>%1: %2 too much</source>
            <translation>%1 : %2 de trop</translation>
        </message>
        <message>
            <source>%1, %2 free</source>
            <translation>%1, %2 libres</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::CapacityMeter</name>
        <message>
            <source>How full the disc is</source>
            <translation>Remplissage du disque</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DataView</name>
        <message>
            <source>Add &amp;Files…</source>
            <translation>Ajouter des &amp;fichiers…</translation>
        </message>
        <message>
            <source>Add F&amp;older…</source>
            <translation>Ajouter un d&amp;ossier…</translation>
        </message>
        <message>
            <source>New Fol&amp;der</source>
            <translation>Nouveau &amp;dossier</translation>
        </message>
        <message>
            <source>&amp;Paste Files</source>
            <translation>&amp;Coller les fichiers</translation>
        </message>
        <message>
            <source>&amp;Rename</source>
            <translation>&amp;Renommer</translation>
        </message>
        <message>
            <source>Re&amp;move from the Disc</source>
            <translation>Re&amp;tirer du disque</translation>
        </message>
        <message>
            <source>Opt&amp;ions…</source>
            <translation>Opt&amp;ions…</translation>
        </message>
        <message>
            <source>Disc &amp;name:</source>
            <translation>&amp;Nom du disque :</translation>
        </message>
        <message>
            <source>Find by name</source>
            <translation>Rechercher par nom</translation>
        </message>
        <message>
            <source>Files on the disc</source>
            <translation>Fichiers du disque</translation>
        </message>
        <message>
            <source>Drop files and folders here</source>
            <translation>Déposez ici des fichiers et des dossiers</translation>
        </message>
        <message>
            <source>They go onto the disc as you see them here. The originals stay where they are.</source>
            <translation>Ils iront sur le disque tels que vous les voyez ici. Les originaux restent où ils sont.</translation>
        </message>
        <message>
            <source>Some items could not be moved as they are.</source>
            <translation>Certains éléments n’ont pas pu être déplacés tels quels.</translation>
        </message>
        <message>
            <source>Adding</source>
            <translation>Ajout</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) found</source>
            <translation>
                <numerusform>%n élément trouvé</numerusform>
                <numerusform>%n éléments trouvés</numerusform>
            </translation>
        </message>
        <message>
            <source>Not everything was added as it is.</source>
            <translation>Tout n’a pas été ajouté tel quel.</translation>
        </message>
        <message numerus="yes">
            <source>%n message(s).</source>
            <translation>
                <numerusform>%n message.</numerusform>
                <numerusform>%n messages.</numerusform>
            </translation>
        </message>
        <message>
            <source>Add Files</source>
            <translation>Ajouter des fichiers</translation>
        </message>
        <message>
            <source>Add Folder</source>
            <translation>Ajouter un dossier</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s)</source>
            <translation>
                <numerusform>%n élément</numerusform>
                <numerusform>%n éléments</numerusform>
            </translation>
        </message>
        <message>
            <source>There are no files to paste. Copy some in the file manager first.</source>
            <translation>Il n’y a pas de fichiers à coller. Copiez-en d’abord dans le gestionnaire de fichiers.</translation>
        </message>
        <message>
            <source>Fi&amp;nd</source>
            <translation>Rec&amp;hercher</translation>
        </message>
        <message>
            <source>&amp;Check Names and Size</source>
            <translation>&amp;Vérifier les noms et la taille</translation>
        </message>
        <message numerus="yes">
            <source>%n item(s) cannot be stored as they are…</source>
            <translation>
                <numerusform>%n élément ne peut être enregistré tel quel…</numerusform>
                <numerusform>%n éléments ne peuvent être enregistrés tels quels…</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n name(s) or detail(s) change…</source>
            <translation>
                <numerusform>%n nom ou détail change…</numerusform>
                <numerusform>%n noms ou détails changent…</numerusform>
            </translation>
        </message>
        <message>
            <source>This is how filesystems of the disc differ from what is shown. Every system reads one that it knows.</source>
            <translation>Voici en quoi les systèmes de fichiers du disque diffèrent de ce qui est affiché. Chaque système lit celui qu’il connaît.</translation>
        </message>
        <message>
            <source>Everything</source>
            <translation>Tout</translation>
        </message>
        <message>
            <source>Names that change</source>
            <translation>Noms qui changent</translation>
        </message>
        <message>
            <source>Missing or not storable</source>
            <translation>Manquants ou non enregistrables</translation>
        </message>
        <message>
            <source>On the disc more than once</source>
            <translation>Plusieurs fois sur le disque</translation>
        </message>
        <message>
            <source>What is shown</source>
            <translation>Ce qui est affiché</translation>
        </message>
        <message>
            <source>&amp;Split over Several Discs…</source>
            <translation>Ré&amp;partir sur plusieurs disques…</translation>
        </message>
        <message>
            <source>These files of an image are there for a while only. Take them out into a folder, and add them from there.</source>
            <translation>Ces fichiers d’une image ne sont là que pour un moment. Extrayez-les dans un dossier et ajoutez-les depuis celui-ci.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DesktopNotifier</name>
        <message>
            <source>It did not succeed</source>
            <translation>Cela n’a pas réussi</translation>
        </message>
        <message>
            <source>Finished</source>
            <translation>Terminé</translation>
        </message>
        <message>
            <source>Finished, but not everything is as it should be</source>
            <translation>Terminé, mais tout n’est pas comme il faut</translation>
        </message>
        <message>
            <source>Show</source>
            <translation>Afficher</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DiscDocument</name>
        <message>
            <source>Rename the Disc</source>
            <translation>Renommer le disque</translation>
        </message>
        <message>
            <source>%1 is on the disc already.</source>
            <translation>%1 est déjà sur le disque.</translation>
        </message>
        <message>
            <source>%1 is called %2 on the disc: its name was taken.</source>
            <translation>%1 s’appelle %2 sur le disque : son nom était pris.</translation>
        </message>
        <message numerus="yes">
            <source>Add %n Item(s)</source>
            <translation>
                <numerusform>Ajouter %n élément</numerusform>
                <numerusform>Ajouter %n éléments</numerusform>
            </translation>
        </message>
        <message>
            <source>New Folder</source>
            <translation>Nouveau dossier</translation>
        </message>
        <message numerus="yes">
            <source>Remove %n Item(s)</source>
            <translation>
                <numerusform>Retirer %n élément</numerusform>
                <numerusform>Retirer %n éléments</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 cannot be moved into itself.</source>
            <translation>%1 ne peut pas être déplacé dans lui-même.</translation>
        </message>
        <message numerus="yes">
            <source>Move %n Item(s)</source>
            <translation>
                <numerusform>Déplacer %n élément</numerusform>
                <numerusform>Déplacer %n éléments</numerusform>
            </translation>
        </message>
        <message>
            <source>A name cannot be empty.</source>
            <translation>Un nom ne peut pas être vide.</translation>
        </message>
        <message>
            <source>A name cannot be %1: no system could open it.</source>
            <translation>Un nom ne peut pas être %1 : aucun système ne pourrait l’ouvrir.</translation>
        </message>
        <message>
            <source>A name can have 255 bytes at most.</source>
            <translation>Un nom peut avoir 255 octets au plus.</translation>
        </message>
        <message>
            <source>There is a %1 in this folder already.</source>
            <translation>Il y a déjà %1 dans ce dossier.</translation>
        </message>
        <message>
            <source>Rename %1</source>
            <translation>Renommer %1</translation>
        </message>
        <message>
            <source>Change Options</source>
            <translation>Modifier les options</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DiscPreview</name>
        <message>
            <source>%1 calls it %2</source>
            <translation>Dans %1 : %2</translation>
        </message>
        <message>
            <source>Not in %1: %2</source>
            <translation>Pas dans %1 : %2</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::DiscTreeModel</name>
        <message>
            <source>Name</source>
            <translation>Nom</translation>
        </message>
        <message>
            <source>Size</source>
            <translation>Taille</translation>
        </message>
        <message>
            <source>Kind</source>
            <translation>Type</translation>
        </message>
        <message>
            <source>Modified</source>
            <translation>Modifié</translation>
        </message>
        <message>
            <source>Folder on the disc</source>
            <translation>Dossier sur le disque</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::FileLending</name>
        <message>
            <source>the files cannot be taken out into %1: %2</source>
            <translation>les fichiers ne peuvent pas être extraits dans %1 : %2</translation>
        </message>
        <message>
            <source>There is nothing to paste or drop.</source>
            <translation>Il n’y a rien à coller ni à déposer.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ImageContentsModel</name>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n fichier</numerusform>
                <numerusform>%n fichiers</numerusform>
            </translation>
        </message>
        <message>
            <source>Track %1</source>
            <translation>Piste %1</translation>
        </message>
        <message>
            <source>%1, sound</source>
            <translation>%1, son</translation>
        </message>
        <message>
            <source>%1, data</source>
            <translation>%1, données</translation>
        </message>
        <message>
            <source>Name</source>
            <translation>Nom</translation>
        </message>
        <message>
            <source>Size</source>
            <translation>Taille</translation>
        </message>
        <message>
            <source>Modified</source>
            <translation>Modifié</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ImageView</name>
        <message>
            <source>&amp;Open Image…</source>
            <translation>&amp;Ouvrir une image…</translation>
        </message>
        <message>
            <source>&amp;Compare with a Folder…</source>
            <translation>&amp;Comparer avec un dossier…</translation>
        </message>
        <message>
            <source>&amp;Take Out Tracks…</source>
            <translation>&amp;Extraire des pistes…</translation>
        </message>
        <message>
            <source>The image</source>
            <translation>L’image</translation>
        </message>
        <message>
            <source>What the image holds</source>
            <translation>Contenu de l’image</translation>
        </message>
        <message>
            <source>Drop a disc image here</source>
            <translation>Déposez une image disque ici</translation>
        </message>
        <message>
            <source>Open Image…</source>
            <translation>Ouvrir une image…</translation>
        </message>
        <message>
            <source>Take Out &amp;Files…</source>
            <translation>Extraire des &amp;fichiers…</translation>
        </message>
        <message>
            <source>Copy what is chosen, or everything, into a folder</source>
            <translation>Copier la sélection, ou tout, dans un dossier</translation>
        </message>
        <message>
            <source>An ISO, BIN or VANT image, or a cue sheet. See what is in it, take files out, compare it with a folder, and write it to a disc.</source>
            <translation>Une image ISO, BIN ou VANT, ou une feuille de repères. Voyez son contenu, extrayez des fichiers, comparez-la avec un dossier et écrivez-la sur un disque.</translation>
        </message>
        <message>
            <source>Cop&amp;y Files</source>
            <translation>Co&amp;pier les fichiers</translation>
        </message>
        <message>
            <source>Take what is chosen out, so that the file manager can paste it</source>
            <translation>Extrait ce qui est choisi, pour que le gestionnaire de fichiers puisse le coller</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::JobBar</name>
        <message>
            <source>Cancel</source>
            <translation>Annuler</translation>
        </message>
        <message>
            <source>Progress</source>
            <translation>Progression</translation>
        </message>
        <message>
            <source>%1 — %2 · %3 so far</source>
            <translation>%1 — %2 · déjà %3</translation>
        </message>
        <message>
            <source>%1 — %2</source>
            <translation>%1 — %2</translation>
        </message>
        <message>
            <source>Cancelling…</source>
            <translation>Annulation…</translation>
        </message>
        <message>
            <source>%1 so far</source>
            <translation>depuis %1</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::JobRunner</name>
        <message>
            <source>A disc is being written. Stop?</source>
            <translation>Un disque est en cours d’écriture. Arrêter ?</translation>
        </message>
        <message>
            <source>&amp;Stop</source>
            <translation>&amp;Arrêter</translation>
        </message>
        <message>
            <source>Tessaron</source>
            <translation>Tessaron</translation>
        </message>
        <message>
            <source>&amp;Go On</source>
            <translation>&amp;Continuer</translation>
        </message>
        <message>
            <source>An image is being made or read. Stop, and quit?</source>
            <translation>Une image est en cours de création ou de lecture. Arrêter et quitter ?</translation>
        </message>
        <message>
            <source>A disc is being written. Stop, and quit?</source>
            <translation>Un disque est en cours d’écriture. Arrêter et quitter ?</translation>
        </message>
        <message>
            <source>&amp;Stop and Quit</source>
            <translation>&amp;Arrêter et quitter</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ListDialog</name>
        <message>
            <source>Details</source>
            <translation>Détails</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::MainWindow</name>
        <message>
            <source>ISO image (.iso)</source>
            <translation>Image ISO (.iso)</translation>
        </message>
        <message>
            <source>BIN image with cue sheet (.bin)</source>
            <translation>Image BIN avec feuille CUE (.bin)</translation>
        </message>
        <message>
            <source>VANT image (.vant)</source>
            <translation>Image VANT (.vant)</translation>
        </message>
        <message>
            <source>Kinds of disc</source>
            <translation>Types de disque</translation>
        </message>
        <message>
            <source>&amp;File</source>
            <translation>&amp;Fichier</translation>
        </message>
        <message>
            <source>Save &amp;Image…</source>
            <translation>Enregistrer une &amp;image…</translation>
        </message>
        <message>
            <source>Make a disc image of what is shown</source>
            <translation>Faire une image de ce qui est affiché</translation>
        </message>
        <message>
            <source>&amp;Verify Images That Were Saved</source>
            <translation>&amp;Vérifier les images enregistrées</translation>
        </message>
        <message>
            <source>&amp;Quit</source>
            <translation>&amp;Quitter</translation>
        </message>
        <message>
            <source>&amp;Edit</source>
            <translation>É&amp;dition</translation>
        </message>
        <message>
            <source>&amp;Disc</source>
            <translation>Dis&amp;que</translation>
        </message>
        <message>
            <source>Tools</source>
            <translation>Outils</translation>
        </message>
        <message>
            <source>Save Image</source>
            <translation>Enregistrer une image</translation>
        </message>
        <message>
            <source>&amp;Burn…</source>
            <translation>&amp;Graver…</translation>
        </message>
        <message>
            <source>Write what is shown to a disc</source>
            <translation>Écrire ce qui est affiché sur un disque</translation>
        </message>
        <message>
            <source>S&amp;top</source>
            <translation>Arrê&amp;ter</translation>
        </message>
        <message>
            <source>Something else is being done. Wait for its end, or stop it.</source>
            <translation>Une autre tâche est en cours. Attendez sa fin ou arrêtez-la.</translation>
        </message>
        <message>
            <source>The files were not opened, since a dialog was open. Open them again.</source>
            <translation>Les fichiers n’ont pas été ouverts, car un dialogue était ouvert. Ouvrez-les de nouveau.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::NoticeBar</name>
        <message>
            <source>&amp;Details…</source>
            <translation>&amp;Détails…</translation>
        </message>
        <message>
            <source>Close this message</source>
            <translation>Fermer ce message</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::OptionsDialog</name>
        <message>
            <source>&amp;Hidden on the disc</source>
            <translation>&amp;Masqué sur le disque</translation>
        </message>
        <message>
            <source>&amp;Everywhere</source>
            <translation>&amp;Partout</translation>
        </message>
        <message>
            <source>Only for &amp;Macs (UDF and HFS+)</source>
            <translation>Seulement pour &amp;Mac (UDF et HFS+)</translation>
        </message>
        <message>
            <source>Only for &amp;PCs (ISO 9660 and Joliet)</source>
            <translation>Seulement pour &amp;PC (ISO 9660 et Joliet)</translation>
        </message>
        <message>
            <source>Only in &amp;these filesystems:</source>
            <translation>Seulement dans &amp;ces systèmes de fichiers :</translation>
        </message>
        <message>
            <source>Options</source>
            <translation>Options</translation>
        </message>
        <message>
            <source>Is found</source>
            <translation>Se trouve</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::PlayerProcess</name>
        <message>
            <source>The player is open already.</source>
            <translation>Le lecteur est déjà ouvert.</translation>
        </message>
        <message>
            <source>The player is not installed.</source>
            <translation>Le lecteur n’est pas installé.</translation>
        </message>
        <message>
            <source>The player cannot be started: %1</source>
            <translation>Le lecteur ne peut pas être lancé : %1</translation>
        </message>
        <message>
            <source>The player ended unexpectedly.</source>
            <translation>Le lecteur s’est arrêté de façon inattendue.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ProjectActions</name>
        <message>
            <source>&amp;New Disc</source>
            <translation>&amp;Nouveau disque</translation>
        </message>
        <message>
            <source>&amp;Open…</source>
            <translation>&amp;Ouvrir…</translation>
        </message>
        <message>
            <source>Open &amp;Recent</source>
            <translation>Ouvrir &amp;récent</translation>
        </message>
        <message>
            <source>&amp;Save Project</source>
            <translation>&amp;Enregistrer le projet</translation>
        </message>
        <message>
            <source>Save Project &amp;As…</source>
            <translation>Enregistrer le projet &amp;sous…</translation>
        </message>
        <message>
            <source>This is the disc that was open when the program ended unexpectedly. It is not saved.</source>
            <translation>Voici le disque qui était ouvert quand le programme s’est arrêté de façon inattendue. Il n’est pas enregistré.</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) of this project are missing: they were moved or removed.</source>
            <translation>
                <numerusform>%n fichier de ce projet manque : il a été déplacé ou supprimé.</numerusform>
                <numerusform>%n fichiers de ce projet manquent : ils ont été déplacés ou supprimés.</numerusform>
            </translation>
        </message>
        <message>
            <source>New disc</source>
            <translation>Nouveau disque</translation>
        </message>
        <message>
            <source>%1[*] — Tessaron</source>
            <translation>%1[*] — Tessaron</translation>
        </message>
        <message>
            <source>Open Project</source>
            <translation>Ouvrir un projet</translation>
        </message>
        <message>
            <source>Projects (*.tessaron)</source>
            <translation>Projets (*.tessaron)</translation>
        </message>
        <message>
            <source>All files (*)</source>
            <translation>Tous les fichiers (*)</translation>
        </message>
        <message>
            <source>Save Project</source>
            <translation>Enregistrer le projet</translation>
        </message>
        <message>
            <source>The project was not saved: %1</source>
            <translation>Le projet n’a pas été enregistré : %1</translation>
        </message>
        <message>
            <source>Tessaron</source>
            <translation>Tessaron</translation>
        </message>
        <message>
            <source>This disc is not saved as a project. Save it first?</source>
            <translation>Ce disque n’est pas enregistré comme projet. L’enregistrer d’abord ?</translation>
        </message>
        <message>
            <source>Without saving, what you put together is lost. The files themselves stay.</source>
            <translation>Sans enregistrement, ce que vous avez rassemblé est perdu. Les fichiers eux-mêmes restent.</translation>
        </message>
        <message>
            <source>No projects yet</source>
            <translation>Pas encore de projets</translation>
        </message>
        <message>
            <source>this program has no panel for discs of its kind</source>
            <translation>ce programme n&apos;a pas de volet pour les disques de ce type</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ProjectKeeper</name>
        <message>
            <source>Try again in a moment.</source>
            <translation>Réessayez dans un instant.</translation>
        </message>
        <message>
            <source>another project is being saved</source>
            <translation>un autre projet est en cours d&apos;enregistrement</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ShareBurning</name>
        <message>
            <source>Disc %1 of %2: %3</source>
            <translation>Disque %1 sur %2 : %3</translation>
        </message>
        <message numerus="yes">
            <source>%1 of %n disc(s) were written.</source>
            <translation>
                <numerusform>%1 disque sur %n a été gravé.</numerusform>
                <numerusform>%1 disques sur %n ont été gravés.</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 is not written.</source>
            <translation>%1 n’est pas gravé.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ShareProjects</name>
        <message numerus="yes">
            <source>%n project(s) were saved.</source>
            <translation>
                <numerusform>%n projet a été enregistré.</numerusform>
                <numerusform>%n projets ont été enregistrés.</numerusform>
            </translation>
        </message>
        <message>
            <source>Open one after the other to burn it.</source>
            <translation>Ouvrez-les l’un après l’autre pour les graver.</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::ShareSaving</name>
        <message numerus="yes">
            <source>%n image(s) were saved.</source>
            <translation>
                <numerusform>%n image a été enregistrée.</numerusform>
                <numerusform>%n images ont été enregistrées.</numerusform>
            </translation>
        </message>
        <message>
            <source>They were not compared with the files.</source>
            <translation>Elles n’ont pas été comparées avec les fichiers.</translation>
        </message>
        <message numerus="yes">
            <source>%1 of %n image(s) were saved.</source>
            <translation>
                <numerusform>%1 image sur %n a été enregistrée.</numerusform>
                <numerusform>%1 images sur %n ont été enregistrées.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::SoundBar</name>
        <message>
            <source>Place in the track</source>
            <translation>Position dans la piste</translation>
        </message>
        <message>
            <source>Click where you want to listen</source>
            <translation>Cliquez là où vous voulez écouter</translation>
        </message>
        <message>
            <source>Time</source>
            <translation>Durée</translation>
        </message>
        <message>
            <source>%1 of %2</source>
            <translation>%1 sur %2</translation>
        </message>
        <message>
            <source>&amp;Pause</source>
            <translation>&amp;Pause</translation>
        </message>
        <message>
            <source>&amp;Listen</source>
            <translation>É&amp;couter</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::SourceIntake</name>
        <message>
            <source>The folder %1 cannot be listed: %2</source>
            <translation>Le dossier %1 ne peut pas être lu : %2</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::SplitDialog</name>
        <message>
            <source>Split over Several Discs</source>
            <translation>Répartir sur plusieurs disques</translation>
        </message>
        <message>
            <source>&amp;Kind of disc:</source>
            <translation>&amp;Type de disque :</translation>
        </message>
        <message>
            <source>Disc</source>
            <translation>Disque</translation>
        </message>
        <message>
            <source>Size</source>
            <translation>Taille</translation>
        </message>
        <message>
            <source>The discs and what is on them</source>
            <translation>Les disques et leur contenu</translation>
        </message>
        <message>
            <source>&amp;Save Images…</source>
            <translation>&amp;Enregistrer les images…</translation>
        </message>
        <message>
            <source>Finding out what goes onto which disc…</source>
            <translation>Recherche de la répartition sur les disques…</translation>
        </message>
        <message>
            <source>Splitting</source>
            <translation>Répartition</translation>
        </message>
        <message numerus="yes">
            <source>%n disc(s) of %1 are needed.</source>
            <translation>
                <numerusform>%n disque de %1 est nécessaire.</numerusform>
                <numerusform>%n disques de %1 sont nécessaires.</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n file(s) are larger than such a disc, and on none.</source>
            <translation>
                <numerusform>%n fichier est plus grand qu’un tel disque et n’est sur aucun.</numerusform>
                <numerusform>%n fichiers sont plus grands qu’un tel disque et ne sont sur aucun.</numerusform>
            </translation>
        </message>
        <message>
            <source>%1: %2</source>
            <translation>%1 : %2</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n fichier</numerusform>
                <numerusform>%n fichiers</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>… and %n more</source>
            <translation>
                <numerusform>… et %n autre</numerusform>
                <numerusform>… et %n autres</numerusform>
            </translation>
        </message>
        <message>
            <source>Too large for such a disc</source>
            <translation>Trop grand pour un tel disque</translation>
        </message>
        <message>
            <source>&amp;Burn…</source>
            <translation>&amp;Graver…</translation>
        </message>
        <message>
            <source>Save &amp;Projects…</source>
            <translation>Enregistrer les &amp;projets…</translation>
        </message>
    </context>
    <context>
        <name>Tessaron::Desktop::VideoView</name>
        <message>
            <source>any language</source>
            <translation>toute langue</translation>
        </message>
        <message>
            <source>for the visually impaired</source>
            <translation>pour malvoyants</translation>
        </message>
        <message>
            <source>comments</source>
            <translation>commentaires</translation>
        </message>
        <message>
            <source>large letters</source>
            <translation>grandes lettres</translation>
        </message>
        <message>
            <source>for children</source>
            <translation>pour enfants</translation>
        </message>
        <message>
            <source>for the hard of hearing</source>
            <translation>pour malentendants</translation>
        </message>
        <message>
            <source>always shown</source>
            <translation>toujours affichés</translation>
        </message>
        <message>
            <source>of an unknown form</source>
            <translation>d’un format inconnu</translation>
        </message>
        <message>
            <source>Title menu</source>
            <translation>Menu des titres</translation>
        </message>
        <message>
            <source>Main menu</source>
            <translation>Menu principal</translation>
        </message>
        <message>
            <source>Subtitle menu</source>
            <translation>Menu des sous-titres</translation>
        </message>
        <message>
            <source>Sound menu</source>
            <translation>Menu audio</translation>
        </message>
        <message>
            <source>Angle menu</source>
            <translation>Menu des angles</translation>
        </message>
        <message>
            <source>Chapter menu</source>
            <translation>Menu des chapitres</translation>
        </message>
        <message numerus="yes">
            <source>%n angle(s)</source>
            <translation>
                <numerusform>%n angle</numerusform>
                <numerusform>%n angles</numerusform>
            </translation>
        </message>
        <message>
            <source>Title %1</source>
            <translation>Titre %1</translation>
        </message>
        <message>
            <source>Chapter %1</source>
            <translation>Chapitre %1</translation>
        </message>
        <message>
            <source>at %1</source>
            <translation>à %1</translation>
        </message>
        <message>
            <source>Sound %1</source>
            <translation>Son %1</translation>
        </message>
        <message numerus="yes">
            <source>%n channel(s)</source>
            <translation>
                <numerusform>%n canal</numerusform>
                <numerusform>%n canaux</numerusform>
            </translation>
        </message>
        <message>
            <source>Subtitles %1</source>
            <translation>Sous-titres %1</translation>
        </message>
        <message>
            <source>Sho&amp;w…</source>
            <translation>Affic&amp;her…</translation>
        </message>
        <message>
            <source>&amp;Open Video DVD…</source>
            <translation>&amp;Ouvrir un DVD vidéo…</translation>
        </message>
        <message>
            <source>Choose a folder VIDEO_TS, or the one that holds it</source>
            <translation>Choisir un dossier VIDEO_TS, ou celui qui le contient</translation>
        </message>
        <message>
            <source>Open &amp;Image…</source>
            <translation>Ouvrir une &amp;image…</translation>
        </message>
        <message>
            <source>Choose an image of a video DVD</source>
            <translation>Choisir une image d’un DVD vidéo</translation>
        </message>
        <message>
            <source>&amp;Play</source>
            <translation>&amp;Lire</translation>
        </message>
        <message>
            <source>Play the disc, or the title or chapter that is chosen</source>
            <translation>Lire le disque, ou le titre ou le chapitre choisi</translation>
        </message>
        <message>
            <source>Drop a video DVD here</source>
            <translation>Déposez un DVD vidéo ici</translation>
        </message>
        <message>
            <source>A folder VIDEO_TS, or an image. See its titles, check and play it, save it as an image for players, and write it to a disc.</source>
            <translation>Un dossier VIDEO_TS ou une image. Voyez ses titres, vérifiez-le et lisez-le, enregistrez-le comme image pour les lecteurs et écrivez-le sur un disque.</translation>
        </message>
        <message>
            <source>Open Video DVD…</source>
            <translation>Ouvrir un DVD vidéo…</translation>
        </message>
        <message>
            <source>The video DVD</source>
            <translation>Le DVD vidéo</translation>
        </message>
        <message>
            <source>Show what is not as players need it</source>
            <translation>Afficher ce qui n’est pas comme il le faut aux lecteurs</translation>
        </message>
        <message>
            <source>Content</source>
            <translation>Contenu</translation>
        </message>
        <message>
            <source>Length</source>
            <translation>Durée</translation>
        </message>
        <message>
            <source>Details</source>
            <translation>Détails</translation>
        </message>
        <message>
            <source>What the video DVD holds</source>
            <translation>Ce que contient le DVD vidéo</translation>
        </message>
        <message>
            <source>of the disc</source>
            <translation>du disque</translation>
        </message>
        <message>
            <source>of title set %1</source>
            <translation>du jeu de titres %1</translation>
        </message>
        <message numerus="yes">
            <source>%n thing(s) are not as players need them.</source>
            <translation>
                <numerusform>%n chose n’est pas comme il la faut aux lecteurs.</numerusform>
                <numerusform>%n choses ne sont pas comme il les faut aux lecteurs.</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>TextLanguages</name>
        <message>
            <source>Language %1</source>
            <translation>Langue %1</translation>
        </message>
    </context>
    <context>
        <name>VideoPanel</name>
        <message>
            <source>Title %1: %2</source>
            <translation>Titre %1 : %2</translation>
        </message>
        <message>
            <source>The disc is copy-protected: its contents are scrambled and cannot be played.</source>
            <translation>Le disque est protégé contre la copie : son contenu est chiffré et ne peut pas être lu.</translation>
        </message>
        <message>
            <source>Video DVD</source>
            <translation>DVD vidéo</translation>
        </message>
        <message>
            <source>Folders VIDEO_TS for DVD players</source>
            <translation>Dossiers VIDEO_TS pour lecteurs de DVD</translation>
        </message>
        <message>
            <source>No video DVD is open. Open one first.</source>
            <translation>Aucun DVD vidéo n’est ouvert. Ouvrez-en un d’abord.</translation>
        </message>
        <message>
            <source>Looking at %1</source>
            <translation>Examen de %1</translation>
        </message>
        <message>
            <source>%1: %2, the longest of %3</source>
            <translation>%1 : %2, le plus long de %3</translation>
        </message>
        <message numerus="yes">
            <source>%n title(s)</source>
            <translation>
                <numerusform>%n titre</numerusform>
                <numerusform>%n titres</numerusform>
            </translation>
        </message>
        <message>
            <source>Open Video DVD</source>
            <translation>Ouvrir un DVD vidéo</translation>
        </message>
        <message>
            <source>Open Image of a Video DVD</source>
            <translation>Ouvrir l’image d’un DVD vidéo</translation>
        </message>
        <message>
            <source>Disc images (*.iso *.bin *.img *.vant *.udf)</source>
            <translation>Images disque (*.iso *.bin *.img *.vant *.udf)</translation>
        </message>
        <message>
            <source>All files (*)</source>
            <translation>Tous les fichiers (*)</translation>
        </message>
        <message>
            <source>Names, lengths and backups of the files, and where they will lie on the disc, are as players need them. Pictures and sound are not checked.</source>
            <translation>Les noms, longueurs et copies de secours des fichiers, et leur emplacement sur le disque, sont tels que les lecteurs les attendent. L’image et le son ne sont pas vérifiés.</translation>
        </message>
        <message>
            <source>Its tables are as players need them. Where its files lie, and pictures and sound, are not checked.</source>
            <translation>Ses tables sont telles que les lecteurs les attendent. L’emplacement des fichiers, l’image et le son ne sont pas vérifiés.</translation>
        </message>
        <message>
            <source>It was not found out where the files will lie on the disc: %1</source>
            <translation>Il n’a pas été déterminé où les fichiers se trouveront sur le disque : %1</translation>
        </message>
    </context>
    <context>
        <name>Words</name>
        <message numerus="yes">
            <source>%n bytes</source>
            <translation>
                <numerusform>%n octet</numerusform>
                <numerusform>%n octets</numerusform>
            </translation>
        </message>
        <message>
            <source>Preparing</source>
            <translation>Préparation</translation>
        </message>
        <message>
            <source>Reading folders</source>
            <translation>Lecture des dossiers</translation>
        </message>
        <message>
            <source>Laying out the disc</source>
            <translation>Mise en page du disque</translation>
        </message>
        <message>
            <source>Measuring the loudness</source>
            <translation>Mesure du volume sonore</translation>
        </message>
        <message>
            <source>Writing</source>
            <translation>Écriture</translation>
        </message>
        <message>
            <source>Comparing</source>
            <translation>Comparaison</translation>
        </message>
        <message>
            <source>Waiting for the disk</source>
            <translation>En attente du disque dur</translation>
        </message>
        <message>
            <source>Done</source>
            <translation>Terminé</translation>
        </message>
        <message numerus="yes">
            <source>%n file(s)</source>
            <translation>
                <numerusform>%n fichier</numerusform>
                <numerusform>%n fichiers</numerusform>
            </translation>
        </message>
        <message>
            <source>%1 of %2</source>
            <translation>%1 sur %2</translation>
        </message>
        <message>
            <source>%1/s</source>
            <translation>%1/s</translation>
        </message>
        <message>
            <source>%1 left</source>
            <translation>reste %1</translation>
        </message>
        <message>
            <source>Hidden on the disc.</source>
            <translation>Masqué sur le disque.</translation>
        </message>
        <message>
            <source>Only for Macs: UDF and HFS+.</source>
            <translation>Seulement pour Mac : UDF et HFS+.</translation>
        </message>
        <message>
            <source>Only for PCs: ISO 9660 and Joliet.</source>
            <translation>Seulement pour PC : ISO 9660 et Joliet.</translation>
        </message>
        <message>
            <source>Only in %1.</source>
            <translation>Seulement dans %1.</translation>
        </message>
        <message>
            <source>Ending the disc, which can take minutes</source>
            <translation>Clôture du disque, ce qui peut durer quelques minutes</translation>
        </message>
        <message>
            <source>untitled disc</source>
            <translation>disque sans titre</translation>
        </message>
        <message>
            <source>untitled folder</source>
            <translation>dossier sans titre</translation>
        </message>
        <message>
            <source>disc</source>
            <translation>disque</translation>
        </message>
    </context>
</TS>
