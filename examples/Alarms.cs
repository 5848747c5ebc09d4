// Asks a device what it is, and prints its alarms for three seconds.
using System;
using System.Runtime.InteropServices;
using System.Threading;

static class Alarms {
    const string Door = "onvif_client_c";
    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    delegate void Observer(IntPtr context, uint id, int alarm, uint input, int active);
    [DllImport(Door)] static extern int onvif_client_set_extensions(string names);
    [DllImport(Door)] static extern int onvif_client_set_traces(string place);
    [DllImport(Door)] static extern int onvif_client_start();
    [DllImport(Door)] static extern void onvif_client_stop();
    [DllImport(Door)] static extern int onvif_client_login(string address, ushort port, string user,
                                                           string password, out uint id);
    [DllImport(Door)] static extern void onvif_client_logout(uint id);
    [DllImport(Door)] static extern int onvif_client_get(uint id, string request, out IntPtr result,
                                                         out UIntPtr size);
    [DllImport(Door)] static extern void onvif_client_free(IntPtr result);
    [DllImport(Door)] static extern int onvif_client_observe(uint id, Observer observer,
                                                             IntPtr context);

    // Kept here, as the library knows it by its address.
    static readonly Observer hear = (context, id, alarm, input, active) =>
        Console.WriteLine("alarm {0} input {1} active {2}", alarm, input, active);

    static int Main(string[] words) {
        onvif_client_set_extensions("all");
        onvif_client_set_traces("off");
        onvif_client_start();
        uint camera;
        IntPtr result = IntPtr.Zero;
        UIntPtr size;
        int error = onvif_client_login(words[0], ushort.Parse(words[1]), words[2], words[3],
                                       out camera);
        if (error == 0 &&
            (error = onvif_client_get(camera, "<Get><devInfo/></Get>", out result, out size)) == 0) {
            Console.WriteLine(Marshal.PtrToStringAnsi(result));
            onvif_client_free(result);
            error = onvif_client_observe(camera, hear, IntPtr.Zero);
            Thread.Sleep(3000);
        }
        onvif_client_logout(camera);
        onvif_client_stop();
        return error == 0 ? 0 : 1;
    }
}
