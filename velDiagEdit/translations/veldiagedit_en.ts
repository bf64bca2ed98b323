<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>vde::EventBoundary</name>
    <message>
        <source>Unknown error</source>
        <translation>Unknown error</translation>
    </message>
</context>
<context>
    <name>vde::TChangedElsewhereBar</name>
    <message>
        <source>&quot;%1&quot; was saved by someone else and has been reloaded</source>
        <translation>&quot;%1&quot; was saved by someone else and has been reloaded</translation>
    </message>
    <message>
        <source>Changed by someone else</source>
        <translation>Changed by someone else</translation>
    </message>
    <message>
        <source>&quot;%1&quot; was changed by someone else</source>
        <translation>&quot;%1&quot; was changed by someone else</translation>
    </message>
    <message>
        <source>Reload</source>
        <translation>Reload</translation>
    </message>
    <message>
        <source>Keep mine</source>
        <translation>Keep mine</translation>
    </message>
</context>
<context>
    <name>vde::TDiagAccessible</name>
    <message>
        <source>Text block</source>
        <translation>Text block</translation>
    </message>
    <message>
        <source>AND gate</source>
        <translation>AND gate</translation>
    </message>
    <message>
        <source>OR gate</source>
        <translation>OR gate</translation>
    </message>
    <message>
        <source>RS flip-flop</source>
        <translation>RS flip-flop</translation>
    </message>
    <message>
        <source>Block</source>
        <translation>Block</translation>
    </message>
    <message>
        <source>%1 “%2”</source>
        <translation>%1 “%2”</translation>
    </message>
    <message>
        <source>1 input</source>
        <translation>1 input</translation>
    </message>
    <message>
        <source>%1 inputs</source>
        <translation>%1 inputs</translation>
    </message>
    <message>
        <source>1 output</source>
        <translation>1 output</translation>
    </message>
    <message>
        <source>%1 outputs</source>
        <translation>%1 outputs</translation>
    </message>
    <message>
        <source>input %1</source>
        <translation>input %1</translation>
    </message>
    <message>
        <source>output %1</source>
        <translation>output %1</translation>
    </message>
    <message>
        <source>no marker</source>
        <translation>no marker</translation>
    </message>
    <message>
        <source>wire %1</source>
        <translation>wire %1</translation>
    </message>
    <message>
        <source>a loose end</source>
        <translation>a loose end</translation>
    </message>
    <message>
        <source>A block of the diagram; Tab and Shift+Tab go to the next and previous block in design mode.</source>
        <translation>A block of the diagram; Tab and Shift+Tab go to the next and previous block in design mode.</translation>
    </message>
    <message>
        <source>Diagram</source>
        <translation>Diagram</translation>
    </message>
    <message>
        <source>%1, %2, %3</source>
        <translation>%1, %2, %3</translation>
    </message>
    <message>
        <source>%1, selected</source>
        <translation>%1, selected</translation>
    </message>
    <message>
        <source>Wire from %1 to %2</source>
        <translation>Wire from %1 to %2</translation>
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
        <translation>Create %1</translation>
    </message>
    <message>
        <source>Input #%1 Size</source>
        <translation>Size of input %1</translation>
    </message>
    <message>
        <source>Input #%1 Pos</source>
        <translation>Position of input %1</translation>
    </message>
    <message>
        <source>Output #%1 Size</source>
        <translation>Size of output %1</translation>
    </message>
    <message>
        <source>Output #%1 Pos</source>
        <translation>Position of output %1</translation>
    </message>
    <message>
        <source>Del. Segment</source>
        <translation>Delete segment</translation>
    </message>
    <message>
        <source>Align Segment</source>
        <translation>Align segment</translation>
    </message>
    <message>
        <source>End with Cross</source>
        <translation>End with a junction</translation>
    </message>
    <message>
        <source>End Connection</source>
        <translation>End connection</translation>
    </message>
    <message>
        <source>No any segment selected</source>
        <translation>No segment is selected.</translation>
    </message>
    <message>
        <source>Segment Rect</source>
        <translation>Segment rectangle</translation>
    </message>
    <message>
        <source>Segment Index</source>
        <translation>Segment index</translation>
    </message>
    <message>
        <source>Con,Idx</source>
        <translation>Connection, segment:</translation>
    </message>
    <message>
        <source>Edit Segment</source>
        <translation>Edit segment</translation>
    </message>
    <message>
        <source>End with Segment</source>
        <translation>End on a segment</translation>
    </message>
    <message>
        <source>Add Connection</source>
        <translation>Add connection</translation>
    </message>
    <message>
        <source>Marker is not free</source>
        <translation>This marker already has a connection.</translation>
    </message>
    <message>
        <source>Add Connections</source>
        <translation>Add connections</translation>
    </message>
    <message>
        <source>Set Max Index</source>
        <translation>Last marker</translation>
    </message>
    <message>
        <source>Add Segment</source>
        <translation>Add segment</translation>
    </message>
    <message>
        <source>Add several connections</source>
        <translation>Add a connection to each of several markers?</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>Align Titles</source>
        <translation>Align labels</translation>
    </message>
    <message>
        <source>Shift By Delta</source>
        <translation>Shift</translation>
    </message>
    <message>
        <source>Shift x,y Values</source>
        <translation>Shift by x, y</translation>
    </message>
    <message>
        <source>Values:</source>
        <translation>Values:</translation>
    </message>
    <message>
        <source>Change Size</source>
        <translation>Change marker size</translation>
    </message>
    <message>
        <source>Change Pos</source>
        <translation>Change marker position</translation>
    </message>
    <message>
        <source>There is no markers available</source>
        <translation>The block has no markers.</translation>
    </message>
    <message>
        <source>Marker was not found</source>
        <translation>The marker was not found.</translation>
    </message>
    <message>
        <source>Change Type</source>
        <translation>Change marker type</translation>
    </message>
    <message>
        <source>Set Title</source>
        <translation>Set labels</translation>
    </message>
    <message>
        <source>Text Titles</source>
        <translation>Labels</translation>
    </message>
    <message>
        <source>Values, delimited by |</source>
        <translation>Values, separated by |</translation>
    </message>
    <message>
        <source>Set Text Pos</source>
        <translation>Set label positions</translation>
    </message>
    <message>
        <source>Text Pos Values</source>
        <translation>Label positions</translation>
    </message>
    <message>
        <source>Set Text Sizes</source>
        <translation>Set label sizes</translation>
    </message>
    <message>
        <source>Text Heights</source>
        <translation>Label heights</translation>
    </message>
    <message>
        <source>Horiz. Margin</source>
        <translation>Horizontal margin</translation>
    </message>
    <message>
        <source>Horiz Margin</source>
        <translation>Horizontal margin</translation>
    </message>
    <message>
        <source>Set In Count</source>
        <translation>Set number of inputs</translation>
    </message>
    <message>
        <source>Input Count</source>
        <translation>Number of inputs</translation>
    </message>
    <message>
        <source>Select marker type</source>
        <translation>Marker type</translation>
    </message>
    <message>
        <source>Set Out Count</source>
        <translation>Set number of outputs</translation>
    </message>
    <message>
        <source>Output Count</source>
        <translation>Number of outputs</translation>
    </message>
    <message>
        <source>Invalid file format</source>
        <translation>This is not a diagram file.</translation>
    </message>
    <message>
        <source>Resize</source>
        <translation>Resize</translation>
    </message>
    <message>
        <source>Move</source>
        <translation>Move</translation>
    </message>
    <message>
        <source>Left, Top, Right, Bottom</source>
        <translation>Left, top, right, bottom</translation>
    </message>
    <message>
        <source>input %1</source>
        <translation>input %1</translation>
    </message>
    <message>
        <source>output %1</source>
        <translation>output %1</translation>
    </message>
    <message>
        <source>Click to select %1; right-click for the wire commands</source>
        <translation>Click to select %1; right-click for the wire commands</translation>
    </message>
    <message>
        <source>Click to select %1; Shift-drag to move, Shift-drag the bottom-right corner to resize</source>
        <translation>Click to select %1; Shift-drag to move, Shift-drag the bottom-right corner to resize</translation>
    </message>
    <message>
        <source>Drag to draw a wire from %1</source>
        <translation>Drag to draw a wire from %1</translation>
    </message>
    <message>
        <source>Drag to resize</source>
        <translation>Drag to resize</translation>
    </message>
    <message>
        <source>Click to select %1, drag to move it, Ctrl-click to add it</source>
        <translation>Click to select %1, drag to move it, Ctrl-click to add it</translation>
    </message>
    <message>
        <source>%1: %2 input(s), %3 output(s)</source>
        <translation>%1: %2 input(s), %3 output(s)</translation>
    </message>
    <message>
        <source>Drag to select blocks and wires</source>
        <translation>Drag to select blocks and wires</translation>
    </message>
    <message>
        <source>Click to select this segment</source>
        <translation>Click to select this segment</translation>
    </message>
    <message>
        <source>Release to wire %1 to %2 of %3</source>
        <translation>Release to wire %1 to %2 of %3</translation>
    </message>
    <message>
        <source>Release to end the wire on this one, with a junction</source>
        <translation>Release to end the wire on this one, with a junction</translation>
    </message>
    <message>
        <source>Release to end the wire here; Escape cancels</source>
        <translation>Release to end the wire here; Escape cancels</translation>
    </message>
    <message>
        <source>An input cannot be wired to an input</source>
        <translation>An input cannot be wired to an input</translation>
    </message>
    <message>
        <source>An output cannot be wired to an output</source>
        <translation>An output cannot be wired to an output</translation>
    </message>
    <message>
        <source>Moving %1 block(s) by %2, %3; Escape puts them back</source>
        <translation>Moving %1 block(s) by %2, %3; Escape puts them back</translation>
    </message>
    <message>
        <source>%1 block(s), %2 wire(s)</source>
        <translation>%1 block(s), %2 wire(s)</translation>
    </message>
    <message>
        <source>Diagram</source>
        <translation>Diagram</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>Cut</translation>
    </message>
    <message>
        <source>The clipboard holds no diagram that can be pasted: %1</source>
        <translation>The clipboard holds no diagram that can be pasted: %1</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Paste</translation>
    </message>
</context>
<context>
    <name>vde::TDiagObjectType</name>
    <message>
        <source>Text</source>
        <translation>Text block</translation>
    </message>
    <message>
        <source>AndLogic</source>
        <translation>AND gate</translation>
    </message>
    <message>
        <source>OrLogic</source>
        <translation>OR gate</translation>
    </message>
    <message>
        <source>RSTrigger</source>
        <translation>RS flip-flop</translation>
    </message>
</context>
<context>
    <name>vde::TIOType</name>
    <message>
        <source>Direct</source>
        <translation>Plain</translation>
    </message>
    <message>
        <source>Inversion</source>
        <translation>Inverted</translation>
    </message>
    <message>
        <source>Arrow</source>
        <translation>Arrow</translation>
    </message>
</context>
<context>
    <name>vde::TQtDialogService</name>
    <message>
        <source>Warning</source>
        <translation>Warning</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Error</translation>
    </message>
    <message>
        <source>Information</source>
        <translation>Information</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>Confirm</translation>
    </message>
    <message>
        <source>&amp;All</source>
        <translation>&amp;All</translation>
    </message>
    <message>
        <source>Changed by someone else</source>
        <translation>Changed by someone else</translation>
    </message>
    <message>
        <source>Overwrite</source>
        <translation>Overwrite</translation>
    </message>
    <message>
        <source>Reload</source>
        <translation>Reload</translation>
    </message>
    <message>
        <source>Save as copy</source>
        <translation>Save as copy</translation>
    </message>
</context>
<context>
    <name>vde::TdmDiagActions</name>
    <message>
        <source>Add Segment ...</source>
        <translation>Add segment…</translation>
    </message>
    <message>
        <source>Edit Segment ...</source>
        <translation>Edit segment…</translation>
    </message>
    <message>
        <source>Get Seg. Index</source>
        <translation>Show segment index</translation>
    </message>
    <message>
        <source>Get Seg. Rect</source>
        <translation>Show segment rectangle</translation>
    </message>
    <message>
        <source>Del. Segment</source>
        <translation>Delete segment</translation>
    </message>
    <message>
        <source>Align Segment</source>
        <translation>Align segment</translation>
    </message>
    <message>
        <source>End Connections</source>
        <translation>End connection</translation>
    </message>
    <message>
        <source>End Connection</source>
        <translation>On the selected marker</translation>
    </message>
    <message>
        <source>End with Cross</source>
        <translation>With a junction</translation>
    </message>
    <message>
        <source>End with Segment</source>
        <translation>On a segment…</translation>
    </message>
    <message>
        <source>Connection</source>
        <translation>Marker</translation>
    </message>
    <message>
        <source>Change Type ...</source>
        <translation>Type</translation>
    </message>
    <message>
        <source>Change Size ...</source>
        <translation>Size…</translation>
    </message>
    <message>
        <source>Change Pos ...</source>
        <translation>Position…</translation>
    </message>
    <message>
        <source>Create</source>
        <translation>Create</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>Shift By Delta ...</source>
        <translation>Shift by…</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>Refresh</translation>
    </message>
    <message>
        <source>Inputs</source>
        <translation>Inputs</translation>
    </message>
    <message>
        <source>Set In Count ...</source>
        <translation>Number of inputs…</translation>
    </message>
    <message>
        <source>Outputs</source>
        <translation>Outputs</translation>
    </message>
    <message>
        <source>Set Out Count ...</source>
        <translation>Number of outputs…</translation>
    </message>
    <message>
        <source>Margins</source>
        <translation>Margins</translation>
    </message>
    <message>
        <source>Horiz. Margin ...</source>
        <translation>Horizontal margin…</translation>
    </message>
    <message>
        <source>Text Params</source>
        <translation>Labels</translation>
    </message>
    <message>
        <source>Set Title ...</source>
        <translation>Texts…</translation>
    </message>
    <message>
        <source>Set Text Sizes ...</source>
        <translation>Sizes…</translation>
    </message>
    <message>
        <source>Set Text Pos ...</source>
        <translation>Positions…</translation>
    </message>
    <message>
        <source>Align Titles</source>
        <translation>Align</translation>
    </message>
    <message>
        <source>File</source>
        <translation>File</translation>
    </message>
    <message>
        <source>Save To ...</source>
        <translation>Save as…</translation>
    </message>
    <message>
        <source>Load From ...</source>
        <translation>Open…</translation>
    </message>
    <message>
        <source>Diagram files (*.dgm)|*.dgm</source>
        <translation>Diagram files (*.dgm)|*.dgm</translation>
    </message>
    <message>
        <source>Load From %1</source>
        <translation>Open %1</translation>
    </message>
    <message>
        <source>Cannot save the diagram to</source>
        <translation>Cannot save the diagram to</translation>
    </message>
    <message>
        <source>Cannot load the diagram from</source>
        <translation>Cannot open the diagram</translation>
    </message>
    <message>
        <source>was removed by someone else after it was loaded</source>
        <translation>was removed by someone else after it was loaded</translation>
    </message>
    <message>
        <source>was stored by someone else, and this one never saw it</source>
        <translation>was stored by someone else, and this one never saw it</translation>
    </message>
    <message>
        <source>was saved by someone else after it was loaded</source>
        <translation>was saved by someone else after it was loaded</translation>
    </message>
    <message>
        <source>The diagram &quot;%1&quot; (%2) %3 (loaded: %4, stored now: %5). Nothing was written.</source>
        <translation>The diagram &quot;%1&quot; (%2) %3 (loaded: %4, stored now: %5). Nothing was written.</translation>
    </message>
</context>
<context>
    <name>vde::TfmEditSegmentParams</name>
    <message>
        <source>Edit Params</source>
        <translation>Segment</translation>
    </message>
    <message>
        <source>Size, pixels</source>
        <translation>Length, pixels</translation>
    </message>
    <message>
        <source>Angle, degrees</source>
        <translation>Angle, degrees</translation>
    </message>
    <message>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>vde::TfmEditSizeValue</name>
    <message>
        <source>Edit Size</source>
        <translation>Size</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Value</translation>
    </message>
    <message>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>vde::TfmSelectItem</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Отмена</source>
        <translation>Cancel</translation>
    </message>
</context>
</TS>
