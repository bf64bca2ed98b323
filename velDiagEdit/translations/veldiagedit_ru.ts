<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru">
<context>
    <name>vde::EventBoundary</name>
    <message>
        <source>Unknown error</source>
        <translation>Неизвестная ошибка</translation>
    </message>
</context>
<context>
    <name>vde::TChangedElsewhereBar</name>
    <message>
        <source>&quot;%1&quot; was saved by someone else and has been reloaded</source>
        <translation>Диаграмма &quot;%1&quot; сохранена другим пользователем и загружена заново</translation>
    </message>
    <message>
        <source>Changed by someone else</source>
        <translation>Изменено другим пользователем</translation>
    </message>
    <message>
        <source>&quot;%1&quot; was changed by someone else</source>
        <translation>Диаграмма &quot;%1&quot; изменена другим пользователем</translation>
    </message>
    <message>
        <source>Reload</source>
        <translation>Загрузить заново</translation>
    </message>
    <message>
        <source>Keep mine</source>
        <translation>Оставить мою</translation>
    </message>
</context>
<context>
    <name>vde::TDiagAccessible</name>
    <message>
        <source>Text block</source>
        <translation>Текстовый блок</translation>
    </message>
    <message>
        <source>AND gate</source>
        <translation>Элемент И</translation>
    </message>
    <message>
        <source>OR gate</source>
        <translation>Элемент ИЛИ</translation>
    </message>
    <message>
        <source>RS flip-flop</source>
        <translation>RS-триггер</translation>
    </message>
    <message>
        <source>Block</source>
        <translation>Блок</translation>
    </message>
    <message>
        <source>%1 “%2”</source>
        <translation>%1 «%2»</translation>
    </message>
    <message>
        <source>1 input</source>
        <translation>входов: 1</translation>
    </message>
    <message>
        <source>%1 inputs</source>
        <translation>входов: %1</translation>
    </message>
    <message>
        <source>1 output</source>
        <translation>выходов: 1</translation>
    </message>
    <message>
        <source>%1 outputs</source>
        <translation>выходов: %1</translation>
    </message>
    <message>
        <source>input %1</source>
        <translation>вход %1</translation>
    </message>
    <message>
        <source>output %1</source>
        <translation>выход %1</translation>
    </message>
    <message>
        <source>no marker</source>
        <translation>без маркера</translation>
    </message>
    <message>
        <source>wire %1</source>
        <translation>соединение %1</translation>
    </message>
    <message>
        <source>a loose end</source>
        <translation>свободного конца</translation>
    </message>
    <message>
        <source>A block of the diagram; Tab and Shift+Tab go to the next and previous block in design mode.</source>
        <translation>Блок схемы; в режиме редактирования Tab и Shift+Tab переходят к следующему и предыдущему блоку.</translation>
    </message>
    <message>
        <source>Diagram</source>
        <translation>Схема</translation>
    </message>
    <message>
        <source>%1, %2, %3</source>
        <translation>%1, %2, %3</translation>
    </message>
    <message>
        <source>%1, selected</source>
        <translation>%1, выбран</translation>
    </message>
    <message>
        <source>Wire from %1 to %2</source>
        <translation>Соединение от %1 до %2</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
</context>
<context>
    <name>vde::TDiagContainer</name>
    <message>
        <source>Create %1</source>
        <translation>Создать: %1</translation>
    </message>
    <message>
        <source>Input #%1 Size</source>
        <translation>Размер входа %1</translation>
    </message>
    <message>
        <source>Input #%1 Pos</source>
        <translation>Положение входа %1</translation>
    </message>
    <message>
        <source>Output #%1 Size</source>
        <translation>Размер выхода %1</translation>
    </message>
    <message>
        <source>Output #%1 Pos</source>
        <translation>Положение выхода %1</translation>
    </message>
    <message>
        <source>Del. Segment</source>
        <translation>Удалить отрезок</translation>
    </message>
    <message>
        <source>Align Segment</source>
        <translation>Выровнять отрезок</translation>
    </message>
    <message>
        <source>End with Cross</source>
        <translation>Закончить точкой соединения</translation>
    </message>
    <message>
        <source>End Connection</source>
        <translation>Закончить соединение</translation>
    </message>
    <message>
        <source>No any segment selected</source>
        <translation>Не выбран ни один отрезок.</translation>
    </message>
    <message>
        <source>Segment Rect</source>
        <translation>Прямоугольник отрезка</translation>
    </message>
    <message>
        <source>Segment Index</source>
        <translation>Номер отрезка</translation>
    </message>
    <message>
        <source>Con,Idx</source>
        <translation>Соединение, отрезок:</translation>
    </message>
    <message>
        <source>Edit Segment</source>
        <translation>Изменить отрезок</translation>
    </message>
    <message>
        <source>End with Segment</source>
        <translation>Закончить на отрезке</translation>
    </message>
    <message>
        <source>Add Connection</source>
        <translation>Добавить соединение</translation>
    </message>
    <message>
        <source>Marker is not free</source>
        <translation>У этого маркера уже есть соединение.</translation>
    </message>
    <message>
        <source>Add Connections</source>
        <translation>Добавить соединения</translation>
    </message>
    <message>
        <source>Set Max Index</source>
        <translation>Последний маркер</translation>
    </message>
    <message>
        <source>Add Segment</source>
        <translation>Добавить отрезок</translation>
    </message>
    <message>
        <source>Add several connections</source>
        <translation>Добавить соединение к каждому из нескольких маркеров?</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Удалить</translation>
    </message>
    <message>
        <source>Align Titles</source>
        <translation>Выровнять надписи</translation>
    </message>
    <message>
        <source>Shift By Delta</source>
        <translation>Сдвинуть</translation>
    </message>
    <message>
        <source>Shift x,y Values</source>
        <translation>Сдвиг по x, y</translation>
    </message>
    <message>
        <source>Values:</source>
        <translation>Значения:</translation>
    </message>
    <message>
        <source>Change Size</source>
        <translation>Изменить размер маркера</translation>
    </message>
    <message>
        <source>Change Pos</source>
        <translation>Изменить положение маркера</translation>
    </message>
    <message>
        <source>There is no markers available</source>
        <translation>У блока нет маркеров.</translation>
    </message>
    <message>
        <source>Marker was not found</source>
        <translation>Маркер не найден.</translation>
    </message>
    <message>
        <source>Change Type</source>
        <translation>Изменить тип маркера</translation>
    </message>
    <message>
        <source>Set Title</source>
        <translation>Задать надписи</translation>
    </message>
    <message>
        <source>Text Titles</source>
        <translation>Надписи</translation>
    </message>
    <message>
        <source>Values, delimited by |</source>
        <translation>Значения через |</translation>
    </message>
    <message>
        <source>Set Text Pos</source>
        <translation>Задать положение надписей</translation>
    </message>
    <message>
        <source>Text Pos Values</source>
        <translation>Положение надписей</translation>
    </message>
    <message>
        <source>Set Text Sizes</source>
        <translation>Задать размер надписей</translation>
    </message>
    <message>
        <source>Text Heights</source>
        <translation>Высота надписей</translation>
    </message>
    <message>
        <source>Horiz. Margin</source>
        <translation>Горизонтальный отступ</translation>
    </message>
    <message>
        <source>Horiz Margin</source>
        <translation>Горизонтальный отступ</translation>
    </message>
    <message>
        <source>Set In Count</source>
        <translation>Задать число входов</translation>
    </message>
    <message>
        <source>Input Count</source>
        <translation>Число входов</translation>
    </message>
    <message>
        <source>Select marker type</source>
        <translation>Тип маркеров</translation>
    </message>
    <message>
        <source>Set Out Count</source>
        <translation>Задать число выходов</translation>
    </message>
    <message>
        <source>Output Count</source>
        <translation>Число выходов</translation>
    </message>
    <message>
        <source>Invalid file format</source>
        <translation>Это не файл схемы.</translation>
    </message>
    <message>
        <source>Resize</source>
        <translation>Изменить размер</translation>
    </message>
    <message>
        <source>Move</source>
        <translation>Переместить</translation>
    </message>
    <message>
        <source>Left, Top, Right, Bottom</source>
        <translation>Слева, сверху, справа, снизу</translation>
    </message>
    <message>
        <source>input %1</source>
        <translation>вход %1</translation>
    </message>
    <message>
        <source>output %1</source>
        <translation>выход %1</translation>
    </message>
    <message>
        <source>Click to select %1; right-click for the wire commands</source>
        <translation>Щелчок выделяет %1; правая кнопка — команды соединений</translation>
    </message>
    <message>
        <source>Click to select %1; Shift-drag to move, Shift-drag the bottom-right corner to resize</source>
        <translation>Щелчок выделяет %1; перетаскивание с Shift перемещает, за правый нижний угол — меняет размер</translation>
    </message>
    <message>
        <source>Drag to draw a wire from %1</source>
        <translation>Перетащите, чтобы провести соединение от: %1</translation>
    </message>
    <message>
        <source>Drag to resize</source>
        <translation>Перетащите, чтобы изменить размер</translation>
    </message>
    <message>
        <source>Click to select %1, drag to move it, Ctrl-click to add it</source>
        <translation>Щелчок выделяет %1, перетаскивание перемещает, Ctrl+щелчок добавляет к выделению</translation>
    </message>
    <message>
        <source>%1: %2 input(s), %3 output(s)</source>
        <translation>%1: входов %2, выходов %3</translation>
    </message>
    <message>
        <source>Drag to select blocks and wires</source>
        <translation>Перетащите, чтобы выделить блоки и соединения</translation>
    </message>
    <message>
        <source>Click to select this segment</source>
        <translation>Щелчок выделяет этот отрезок</translation>
    </message>
    <message>
        <source>Release to wire %1 to %2 of %3</source>
        <translation>Отпустите, чтобы соединить %1 с: %2 (%3)</translation>
    </message>
    <message>
        <source>Release to end the wire on this one, with a junction</source>
        <translation>Отпустите, чтобы закончить соединение на этом, с точкой пересечения</translation>
    </message>
    <message>
        <source>Release to end the wire here; Escape cancels</source>
        <translation>Отпустите, чтобы закончить соединение здесь; Esc — отмена</translation>
    </message>
    <message>
        <source>An input cannot be wired to an input</source>
        <translation>Вход нельзя соединить со входом</translation>
    </message>
    <message>
        <source>An output cannot be wired to an output</source>
        <translation>Выход нельзя соединить с выходом</translation>
    </message>
    <message>
        <source>Moving %1 block(s) by %2, %3; Escape puts them back</source>
        <translation>Перемещение блоков (%1) на %2, %3; Esc возвращает их</translation>
    </message>
    <message>
        <source>%1 block(s), %2 wire(s)</source>
        <translation>Блоков: %1, соединений: %2</translation>
    </message>
    <message>
        <source>Diagram</source>
        <translation>Схема</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>Вырезать</translation>
    </message>
    <message>
        <source>The clipboard holds no diagram that can be pasted: %1</source>
        <translation>В буфере обмена нет схемы, которую можно вставить: %1</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Вставить</translation>
    </message>
</context>
<context>
    <name>vde::TDiagObjectType</name>
    <message>
        <source>Text</source>
        <translation>Текстовый блок</translation>
    </message>
    <message>
        <source>AndLogic</source>
        <translation>Элемент И</translation>
    </message>
    <message>
        <source>OrLogic</source>
        <translation>Элемент ИЛИ</translation>
    </message>
    <message>
        <source>RSTrigger</source>
        <translation>RS-триггер</translation>
    </message>
</context>
<context>
    <name>vde::TIOType</name>
    <message>
        <source>Direct</source>
        <translation>Прямой</translation>
    </message>
    <message>
        <source>Inversion</source>
        <translation>Инверсный</translation>
    </message>
    <message>
        <source>Arrow</source>
        <translation>Стрелка</translation>
    </message>
</context>
<context>
    <name>vde::TQtDialogService</name>
    <message>
        <source>Warning</source>
        <translation>Предупреждение</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Ошибка</translation>
    </message>
    <message>
        <source>Information</source>
        <translation>Сообщение</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>Подтверждение</translation>
    </message>
    <message>
        <source>&amp;All</source>
        <translation>&amp;Все</translation>
    </message>
    <message>
        <source>Changed by someone else</source>
        <translation>Изменено другим пользователем</translation>
    </message>
    <message>
        <source>Overwrite</source>
        <translation>Перезаписать</translation>
    </message>
    <message>
        <source>Reload</source>
        <translation>Загрузить заново</translation>
    </message>
    <message>
        <source>Save as copy</source>
        <translation>Сохранить как копию</translation>
    </message>
</context>
<context>
    <name>vde::TdmDiagActions</name>
    <message>
        <source>Add Segment ...</source>
        <translation>Добавить отрезок…</translation>
    </message>
    <message>
        <source>Edit Segment ...</source>
        <translation>Изменить отрезок…</translation>
    </message>
    <message>
        <source>Get Seg. Index</source>
        <translation>Номер отрезка</translation>
    </message>
    <message>
        <source>Get Seg. Rect</source>
        <translation>Прямоугольник отрезка</translation>
    </message>
    <message>
        <source>Del. Segment</source>
        <translation>Удалить отрезок</translation>
    </message>
    <message>
        <source>Align Segment</source>
        <translation>Выровнять отрезок</translation>
    </message>
    <message>
        <source>End Connections</source>
        <translation>Закончить соединение</translation>
    </message>
    <message>
        <source>End Connection</source>
        <translation>На выбранном маркере</translation>
    </message>
    <message>
        <source>End with Cross</source>
        <translation>Точкой соединения</translation>
    </message>
    <message>
        <source>End with Segment</source>
        <translation>На отрезке…</translation>
    </message>
    <message>
        <source>Connection</source>
        <translation>Маркер</translation>
    </message>
    <message>
        <source>Change Type ...</source>
        <translation>Тип</translation>
    </message>
    <message>
        <source>Change Size ...</source>
        <translation>Размер…</translation>
    </message>
    <message>
        <source>Change Pos ...</source>
        <translation>Положение…</translation>
    </message>
    <message>
        <source>Create</source>
        <translation>Создать</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Удалить</translation>
    </message>
    <message>
        <source>Shift By Delta ...</source>
        <translation>Сдвинуть…</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>Обновить</translation>
    </message>
    <message>
        <source>Inputs</source>
        <translation>Входы</translation>
    </message>
    <message>
        <source>Set In Count ...</source>
        <translation>Число входов…</translation>
    </message>
    <message>
        <source>Outputs</source>
        <translation>Выходы</translation>
    </message>
    <message>
        <source>Set Out Count ...</source>
        <translation>Число выходов…</translation>
    </message>
    <message>
        <source>Margins</source>
        <translation>Отступы</translation>
    </message>
    <message>
        <source>Horiz. Margin ...</source>
        <translation>Горизонтальный отступ…</translation>
    </message>
    <message>
        <source>Text Params</source>
        <translation>Надписи</translation>
    </message>
    <message>
        <source>Set Title ...</source>
        <translation>Тексты…</translation>
    </message>
    <message>
        <source>Set Text Sizes ...</source>
        <translation>Размеры…</translation>
    </message>
    <message>
        <source>Set Text Pos ...</source>
        <translation>Положение…</translation>
    </message>
    <message>
        <source>Align Titles</source>
        <translation>Выровнять</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Файл</translation>
    </message>
    <message>
        <source>Save To ...</source>
        <translation>Сохранить как…</translation>
    </message>
    <message>
        <source>Load From ...</source>
        <translation>Открыть…</translation>
    </message>
    <message>
        <source>Diagram files (*.dgm)|*.dgm</source>
        <translation>Файлы схем (*.dgm)|*.dgm</translation>
    </message>
    <message>
        <source>Load From %1</source>
        <translation>Открыть %1</translation>
    </message>
    <message>
        <source>Cannot save the diagram to</source>
        <translation>Не удалось сохранить схему в</translation>
    </message>
    <message>
        <source>Cannot load the diagram from</source>
        <translation>Не удалось открыть схему</translation>
    </message>
    <message>
        <source>was removed by someone else after it was loaded</source>
        <translation>удалена другим пользователем после загрузки</translation>
    </message>
    <message>
        <source>was stored by someone else, and this one never saw it</source>
        <translation>сохранена другим пользователем, и эта копия её не видела</translation>
    </message>
    <message>
        <source>was saved by someone else after it was loaded</source>
        <translation>сохранена другим пользователем после загрузки</translation>
    </message>
    <message>
        <source>The diagram &quot;%1&quot; (%2) %3 (loaded: %4, stored now: %5). Nothing was written.</source>
        <translation>Схема «%1» (%2) %3 (загружена: %4, сохранена сейчас: %5). Ничего не записано.</translation>
    </message>
</context>
<context>
    <name>vde::TfmEditSegmentParams</name>
    <message>
        <source>Edit Params</source>
        <translation>Отрезок</translation>
    </message>
    <message>
        <source>Size, pixels</source>
        <translation>Длина, пикселей</translation>
    </message>
    <message>
        <source>Angle, degrees</source>
        <translation>Угол, градусов</translation>
    </message>
    <message>
        <source>Ok</source>
        <translation>ОК</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Отмена</translation>
    </message>
</context>
<context>
    <name>vde::TfmEditSizeValue</name>
    <message>
        <source>Edit Size</source>
        <translation>Размер</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Значение</translation>
    </message>
    <message>
        <source>Ok</source>
        <translation>ОК</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Отмена</translation>
    </message>
</context>
<context>
    <name>vde::TfmSelectItem</name>
    <message>
        <source>OK</source>
        <translation>ОК</translation>
    </message>
    <message>
        <source>Отмена</source>
        <translation>Отмена</translation>
    </message>
</context>
</TS>
