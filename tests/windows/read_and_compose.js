// Reads a message, decodes its attachment, then builds and assembles a new one.
// Run: cscript //nologo read_and_compose.js message.eml
var fso = new ActiveXObject("Scripting.FileSystemObject");
var msg = new ActiveXObject("ParcelvaneLib.EMSMessageParser");
msg.FullMessage = fso.OpenTextFile(WScript.Arguments(0)).ReadAll();
WScript.Echo("Subject: " + msg.Subject);
WScript.Echo("From: " + msg.SenderName + " <" + msg.SenderEmail + ">");
WScript.Echo("To: " + msg.RecipientName + " <" + msg.RecipientEmail + ">");

var parts = msg.MimePart.MimeParts;
WScript.Echo("Parts: " + parts.PartsCount);
for (var e = new Enumerator(parts); !e.atEnd(); e.moveNext()) {
  var part = e.item();
  WScript.Echo("  " + part.MimeContentTypeString + " attachment=" + part.IsAttachPart + " " + part.AttachName);
}
WScript.Echo("First part: " + parts(0).DecodedBody);

var attach = parts(1);
WScript.Echo(attach.AttachName + ": " + attach.DecodedBinary.DataSize + " bytes");
var copy = new ActiveXObject("ParcelvaneLib.EMSMimePart");
copy.BodyObject = attach.DecodedBinary;
WScript.Echo(copy.DecodedBody);

var reply = new ActiveXObject("ParcelvaneLib.EMSMessageParser");
reply.SenderEmail = "anna@example.com";
reply.RecipientEmail = msg.SenderEmail;
reply.Subject = "Re: " + msg.Subject;
reply.TextBody = "Thanks, received.";
reply.HTMLBody = "<p>Thanks, received.</p>";
reply.AddAttach("figures-copy.txt", attach.DecodedBinary);
var assembled = new ActiveXObject("ParcelvaneLib.EMSMessageParser");
assembled.ParseObject(reply.AssembleObject());
WScript.Echo(assembled.FullMessage);
WScript.Echo("DONE");
